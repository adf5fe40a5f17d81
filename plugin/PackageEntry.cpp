// The two functions through which the host finds the package: all that the library exports.

#include "plugin/StreamlabsDll.h"

extern "C" {

Q_DECL_EXPORT int sdk()
{
    return 4;
}

Q_DECL_EXPORT IBuiltInPackageLibrary* instance()
{
    return new StreamlabsDll(nullptr);
}

} // extern "C"
