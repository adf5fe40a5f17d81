// A settings document through each of the five actions. The input is the document.

#include "actions/SlobsAudioWidget.h"
#include "actions/SlobsRecordWidget.h"
#include "actions/SlobsSceneWidget.h"
#include "actions/SlobsSourceWidget.h"
#include "actions/SlobsStreamWidget.h"
#include "fuzz/Fuzz.h"
#include "relay/MekZoPluginEventType.h"

#include <QApplication>
#include <QJsonDocument>

#include <array>
#include <memory>

using namespace Qt::StringLiterals;
using namespace MekZoPluginEventType;

namespace {

//! One action, which lives as long as the process: making one costs hundred times more than initialising it
//! anew.
class Action
{
public:
    explicit Action(ZOPlugin* made) : plugin(made)
    {
        QObject::connect(plugin.get(), &ZOPlugin::eventSent, [this](QJsonObject const& message) {
            saved = message.value(kFieldEvent).toObject().value(kFieldPayload).toObject();
        });
        plugin->init({}, {});
        defaults = save();
    }

    void load(QJsonObject const& document) { plugin->init({}, {{kFieldPayload, document}}); }
    QJsonObject save()
    {
        saved = {};
        QJsonObject reply;
        plugin->eventReceived({{kFieldEvent, QJsonObject{{kFieldType, kUpdateSettingsEvent}}}}, reply);
        return saved;
    }

    void check(QJsonObject const& document)
    {
        load(document);
        QJsonObject const first = save();
        load(first);
        Fuzz::require(save() == first, "what was saved and loaded is saved the same");
        if (document.value("version"_L1).toInt() < 2) {
            return;
        }
        for (auto member = document.begin(); member != document.end(); ++member) {
            Fuzz::require(defaults.contains(member.key()) || first.value(member.key()) == member.value(),
                "what nobody here knows is kept");
        }
    }

private:
    std::unique_ptr<ZOPlugin> plugin;
    QJsonObject saved;
    //! For the keys.
    QJsonObject defaults;
};

std::array<Action, 5>& actions()
{
    static int count = 1;
    static char name[] = "fuzz";
    static char* arguments[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Never deleted, for Qt's fonts do not bear the end of a process.
    static auto* const application = new QApplication(count, arguments);
    Q_UNUSED(application)
    static std::array<Action, 5> all{Action(new SlobsStreamWidget), Action(new SlobsRecordWidget),
        Action(new SlobsSceneWidget), Action(new SlobsSourceWidget), Action(new SlobsAudioWidget)};
    return all;
}

} // namespace

//! What it has read of its own files is fontconfig's.
extern "C" Q_DECL_EXPORT char const* __lsan_default_suppressions() // NOLINT: the sanitizer's name
{
    return "leak:libfontconfig";
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    auto const document = QJsonDocument::fromJson(Fuzz::bytes(data, size).toByteArray());
    if (document.isObject()) {
        for (auto& action : actions()) {
            action.check(document.object());
        }
    }
    return 0;
}
