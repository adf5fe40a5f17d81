// lumen-bench: what the package costs, each figure as a ratio to a floor measured in the same run.

#include "bench/BenchRow.h"
#include "bench/DesktopProcess.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

void print(BenchRow const& row)
{
    std::printf("%-84s %9.1f %-3s  %9.1f  %6.2f  %6.2f  %s\n", qPrintable(row.what), row.ours,
        qPrintable(row.unit), row.floor, row.ratio(), row.limit, row.holds() ? "" : "OVER");
    std::printf("    against %s\n", qPrintable(row.floorIs));
    std::fflush(stdout);
}

QJsonObject toJson(BenchRow const& row)
{
    return {{u"what"_s, row.what}, {u"floor_is"_s, row.floorIs}, {u"unit"_s, row.unit}, {u"ours"_s, row.ours},
        {u"floor"_s, row.floor}, {u"ratio"_s, row.ratio()}, {u"limit"_s, row.limit},
        {u"holds"_s, row.holds()}};
}

} // namespace

int main(int argc, char* argv[])
{
    constexpr int kStandInArguments = 4;
    if (argc == kStandInArguments && qstrcmp(argv[1], "--stand-in") == 0) {
        QCoreApplication const app(argc, argv);
        return DesktopProcess::run(QByteArray(argv[2]).toInt(), QByteArray(argv[3]).toInt());
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication const app(argc, argv);
    QCoreApplication::setApplicationName(u"lumen-bench"_s);
    Benchmarks const benchmarks =
        benchRelay() + benchLink() + benchKeys() + benchDrag() + benchFaces() + benchIcons();
    QStringList names;
    for (auto const& benchmark : benchmarks) {
        names.append(benchmark.name);
    }
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Measures the package. Ends with 1 when a ratio is over its limit, which a busy machine can cause."_s);
    QCommandLineOption const json(u"json"_s, u"Write the figures to FILE as JSON."_s, u"FILE"_s);
    QCommandLineOption const only(
        u"only"_s, u"Take this measurement alone: %1."_s.arg(names.join(", "_L1)), u"NAME"_s);
    QCommandLineOption const verbose(u"verbose"_s, u"Show the package's log."_s);
    parser.addOptions({json, only, verbose});
    parser.addHelpOption();
    parser.process(app);
    if (!parser.positionalArguments().isEmpty() ||
        (parser.isSet(only) && !names.contains(parser.value(only)))) {
        std::fprintf(stderr, "There are the measurements %s.\n", qPrintable(names.join(", "_L1)));
        return 2;
    }

    if (!parser.isSet(verbose)) {
        qInstallMessageHandler([](QtMsgType, QMessageLogContext const&, QString const&) {});
    }

    std::printf("%-84s %9s %-3s  %9s  %6s  %6s\n", "", "ours", "", "floor", "ratio", "limit");
    QJsonArray rows;
    bool allHold = true;
    for (auto const& benchmark : benchmarks) {
        if (parser.isSet(only) && parser.value(only) != benchmark.name) {
            continue;
        }
        for (auto const& row : benchmark.measure()) {
            print(row);
            rows.append(toJson(row));
            allHold = allHold && row.holds();
        }
    }
    if (parser.isSet(json)) {
        QFile file(parser.value(json));
        if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(rows).toJson()) < 0) {
            std::fprintf(stderr, "%s cannot be written.\n", qPrintable(file.fileName()));
            return 1;
        }
    }
    return allHold ? 0 : 1;
}
