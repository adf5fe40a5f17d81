#include "devhost/host/PackageCheck.h"

#include "devhost/fakes/RelayServer.h"
#include "devhost/host/ConsoleKey.h"
#include "devhost/host/PluginHost.h"
#include "plugin/IBuiltInPackageLibrary.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDirIterator>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QJsonArray>
#include <QTranslator>

#include <utility>

#if defined(__SANITIZE_ADDRESS__)
// GCC brings the function without its header.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#elif defined(__GLIBC__)
#include <malloc.h>
#endif

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kMenuImage(32, 32);

//! Bytes of the heap that are in use, or -1 where the system does not tell.
qint64 heapInUse()
{
#if defined(__SANITIZE_ADDRESS__)
    return static_cast<qint64>(__sanitizer_get_current_allocated_bytes()); // its heap is not glibc's
#elif defined(__GLIBC__) && __GLIBC_PREREQ(2, 33)
    auto const info = mallinfo2();
    return static_cast<qint64>(info.uordblks) + static_cast<qint64>(info.hblkhd);
#else
    return -1;
#endif
}

class Check
{
public:
    explicit Check(QString configDir) : folder(std::move(configDir)) {}

    void run(QString const& file);
    QList<PackageCheck::Finding> findings;

private:
    struct Action
    {
        QString id;
        QString title;
        QString menuIcon;
        QStringList stateIcons;
    };

    //! A finding that is good when there are no \a problems.
    void add(QString const& what, QStringList const& problems, QString const& good)
    {
        findings.append({problems.isEmpty(), what, problems.isEmpty() ? good : problems.join(u"; "_s)});
    }
    void configuration();
    void labels();
    void makeActions();
    void images();
    void memory();
    std::unique_ptr<ConsoleKey> make(Action const& action, int index) const;

    QString folder;
    PluginHost host;
    RelayServer relay;
    QList<Action> actions;
};

void Check::run(QString const& file)
{
    relay.listen();
    if (!host.load({file, relay.port(), folder, u"en_US"_s})) {
        findings.append({false, u"library"_s, host.errorString()});
        return;
    }
    findings.append({true, u"exports"_s, u"instance, sdk"_s});
    findings.append({true, u"sdk"_s, QString::number(PluginHost::kSdkVersion)});
    configuration();
    labels();
    makeActions();
    images();
    memory();
    bool const gone = host.unload();
    findings.append({gone, u"unloading"_s,
        gone ? u"the library has left the memory"_s : u"the library stays in memory"_s});
}

void Check::configuration()
{
    auto& package = *host.package();
    QJsonObject const config = package.list();
    QStringList problems;
    for (auto const& member : {u"category"_s, u"title"_s, u"icon"_s}) {
        if (config.value(member).toString().isEmpty()) {
            problems.append(u"no \"%1\""_s.arg(member));
        }
    }
    if (package.versionName().isEmpty() || package.versionCode() <= 0) {
        problems.append(u"no version"_s);
    }
    QStringList ids;
    for (auto const& value : config.value("subnode"_L1).toArray()) {
        QJsonObject const entry = value.toObject();
        Action action{entry.value("category"_L1).toString(), entry.value("title"_L1).toString(),
            entry.value("menu_icon"_L1).toString(), {}};
        if (action.id.isEmpty() || action.title.isEmpty() || action.menuIcon.isEmpty()) {
            problems.append(
                u"action %1 has no \"category\", \"title\" or \"menu_icon\""_s.arg(actions.size()));
        }
        if (ids.contains(action.id)) {
            problems.append(u"%1 is there twice"_s.arg(action.id));
        }
        ids.append(action.id);
        actions.append(action);
    }
    if (actions.isEmpty()) {
        problems.append(u"it offers no action"_s);
    }
    add(u"configuration"_s, problems,
        u"%1 actions, version %2 (%3)"_s.arg(actions.size())
            .arg(package.versionName())
            .arg(package.versionCode()));
}

void Check::labels()
{
    auto& package = *host.package();
    QStringList keys{package.list().value("title"_L1).toString()};
    for (auto const& action : actions) {
        keys.append(action.title);
    }
    QStringList languages;
    for (QDirIterator files(u":/"_s, {u"language_*.qm"_s}, QDir::Files, QDirIterator::Subdirectories);
        files.hasNext();) {
        files.next();
        languages.append(files.fileInfo().completeBaseName().section(u'_', 1));
    }
    languages.sort();
    if (!languages.contains(u"en_US"_s)) {
        findings.append({false, u"labels"_s, u"there are no texts in en_US"_s});
    }
    for (auto const& language : std::as_const(languages)) {
        QStringList problems;
        auto* const translator = package.translate(language);
        if (translator) {
            QCoreApplication::installTranslator(translator);
            auto const texts = package.mapping();
            for (auto const& key : std::as_const(keys)) { // one that is missing has been told
                if (QString const text = texts.value(key, key);
                    !key.isEmpty() && (text.isEmpty() || text == key)) {
                    problems.append(u"no text for %1"_s.arg(key));
                }
            }
            QCoreApplication::removeTranslator(translator);
        } else {
            problems.append(u"its texts cannot be loaded"_s);
        }
        add(u"labels, "_s + language, problems, u"%1"_s.arg(keys.size()));
    }
    if (auto* const translator = package.translate(u"en_US"_s)) {
        QCoreApplication::installTranslator(translator);
    }
}

std::unique_ptr<ConsoleKey> Check::make(Action const& action, int index) const
{
    return ConsoleKey::create(*host.package(), action.id, index, {});
}

void Check::makeActions()
{
    int index = 0;
    for (auto& action : actions) {
        QStringList problems;
        auto key = make(action, index++);
        if (!key) {
            findings.append({false, action.id, u"it cannot be made"_s});
            continue;
        }
        QWidget const* const face = key->faceWidget();
        if (!face || !key->panelWidget()) {
            problems.append(face ? u"it has no panel"_s : u"it has no face"_s);
        } else if (face->size() != ConsoleKey::kFaceSize) {
            problems.append(u"its face has %1 x %2 pixels"_s.arg(face->width()).arg(face->height()));
        }
        auto const titles = key->settings().value("titlelist"_L1).toArray();
        for (auto const& icon : key->settings().value("iconlist"_L1).toArray()) {
            action.stateIcons.append(icon.toString());
        }
        if (key->settings().isEmpty()) {
            problems.append(u"it sends no settings document"_s);
        } else if (titles.size() != action.stateIcons.size()) {
            problems.append(
                u"it has %1 titles and %2 icons"_s.arg(titles.size()).arg(action.stateIcons.size()));
        }
        key.reset();
        add(action.id, problems, u"made and deleted, %1 states"_s.arg(titles.size()));
    }
}

void Check::images()
{
    QStringList problems;
    QStringList seen;
    auto const look = [&](QString const& path, QSize size) {
        if (path.isEmpty() || seen.contains(path)) {
            return;
        }
        seen.append(path);
        auto const measure = [&](QString const& file, QSize wanted) {
            QSize const found = QImageReader(file).size();
            if (!found.isValid()) {
                problems.append(file + (QFile::exists(file) ? u" is no picture"_s : u" is missing"_s));
            } else if (wanted.isValid() && found != wanted) {
                problems.append(u"%1 has %2 x %3 pixels, not %4 x %5"_s.arg(file)
                        .arg(found.width())
                        .arg(found.height())
                        .arg(wanted.width())
                        .arg(wanted.height()));
            }
        };
        measure(path, size);
        QFileInfo const file(path);
        QString const twice = u"%1/%2@2x.%3"_s.arg(file.path(), file.completeBaseName(), file.suffix());
        if (QFile::exists(twice)) {
            measure(twice, size * 2);
        }
    };
    look(host.package()->list().value("icon"_L1).toString(), QSize());
    for (auto const& action : std::as_const(actions)) {
        look(action.menuIcon, kMenuImage);
        for (auto const& icon : action.stateIcons) {
            look(icon, ConsoleKey::kFaceSize);
        }
    }
    add(u"images"_s, problems, u"%1, each of its size"_s.arg(seen.size()));
}

// What is kept after the first rounds, for the next time, is no loss; what goes on growing is.
void Check::memory()
{
    constexpr int kRounds = 20;
    constexpr qint64 kMostLost = 4096; // for each action and round
    auto const rounds = [&] {
        for (int round = 0; round < kRounds; ++round) {
            int index = 0;
            for (auto const& action : std::as_const(actions)) {
                make(action, index++);
            }
            // Each is let in by the relay, and gone from there again, before the next are made.
            QDeadlineTimer const patience(std::chrono::seconds(1));
            do {
                QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
            } while (relay.clientCount() > 0 && !patience.hasExpired());
        }
        return heapInUse();
    };
    rounds();
    qint64 const before = rounds();
    if (before < 0 || actions.isEmpty()) {
        return;
    }
    qint64 const lost = (rounds() - before) / (kRounds * actions.size());
    findings.append({lost <= kMostLost, u"memory"_s,
        u"%1 bytes lost with each action that is made and deleted"_s.arg(std::max<qint64>(lost, 0))});
}

} // namespace

QList<PackageCheck::Finding> PackageCheck::run(QString const& file, QString const& configDir)
{
    Check check(configDir);
    check.run(file);
    return check.findings;
}
