// Scripts for the development host. The input is a script.

#include "devhost/script/ScriptParser.h"
#include "fuzz/Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    int number = 0;
    for (auto const& line : QString::fromUtf8(Fuzz::bytes(data, size)).split(u'\n')) {
        auto const [step, error, column] = ScriptParser::parse(line, ++number);
        QString const text = line.trimmed();
        Fuzz::require(column >= 1 && column <= line.size() + 1, "a column is in the line");
        Fuzz::require(!step || error.isEmpty(), "a line that is wrong is no step");
        Fuzz::require(
            step || !error.isEmpty() || text.isEmpty() || text.startsWith(u'#'), "a line is a step or wrong");
        if (step) {
            int const kinds = (step->action ? 1 : 0) + (step->expectation ? 1 : 0) + (step->waitMs ? 1 : 0) +
                              (step->note ? 1 : 0) + (step->quit ? 1 : 0);
            Fuzz::require(
                kinds == 1 && step->lineNumber == number && step->text == text, "a step does one thing");
            Fuzz::require(
                step->waitMs.value_or(0) >= 0 && step->withinMs.value_or(0) >= 0, "time goes forward");
        }
    }
    return 0;
}
