// Runs a target with inputs that are kept: replay FILE-OR-FOLDER …

#include "fuzz/Fuzz.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace fs = std::filesystem;

namespace {

void run(fs::path const& file)
{
    std::printf("%s\n", file.c_str());
    std::fflush(stdout); // the last name is the one that did it
    std::ifstream stream(file, std::ios::binary);
    std::vector<char> const input(std::istreambuf_iterator<char>(stream), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(input.data()), input.size());
}

} // namespace

int main(int argc, char** argv)
{
    int inputs = 0;
    for (fs::path const path : std::vector(argv + 1, argv + argc)) {
        if (!fs::is_directory(path)) {
            run(path);
            ++inputs;
            continue;
        }
        for (auto const& entry : fs::directory_iterator(path)) {
            run(entry.path());
            ++inputs;
        }
    }
    return inputs > 0 ? 0 : 1; // a folder that has moved tests nothing
}
