#include "devhost/script/ScriptParser.h"

#include "devhost/fakes/DesktopControls.h"
#include "devhost/fakes/JsonMatch.h"
#include "devhost/host/DevHost.h"
#include "devhost/script/ConsoleSheet.h"
#include "devhost/script/PanelUser.h"
#include "streamlabs/SlobsMessages.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QList>
#include <QMap>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int kDefaultWithinMs = 3000;

// ---- Words

struct Token
{
    QString text;
    std::optional<QJsonObject> object;
    //! Where it begins in the line, counted from 1.
    qsizetype column = 1;
};

qsizetype endOfWord(QStringView line, qsizetype begin)
{
    while (begin < line.size() && !line.at(begin).isSpace()) {
        ++begin;
    }
    return begin;
}

//! The end of the JSON string or object that starts at \a begin, or -1.
qsizetype endOfJson(QStringView line, qsizetype begin)
{
    int depth = 0;
    bool inString = false;
    for (qsizetype i = begin; i < line.size(); ++i) {
        QChar const c = line.at(i);
        if (inString && c == u'\\') {
            ++i;
        } else if (c == u'"') {
            inString = !inString;
        } else if (!inString && c == u'{') {
            ++depth;
        } else if (!inString && c == u'}') {
            --depth;
        }
        if (depth == 0 && !inString) {
            return i + 1;
        }
    }
    return -1;
}

//! Splits \a line from \a begin on. Where it goes wrong, and how; an empty error when it does not.
ScriptParser::Result tokenize(QString const& line, qsizetype begin, QList<Token>& tokens)
{
    for (qsizetype i = begin; i < line.size();) {
        QChar const c = line.at(i);
        if (c.isSpace()) {
            ++i;
            continue;
        }
        bool const isJson = c == u'"' || c == u'{';
        qsizetype const end = isJson ? endOfJson(line, i) : endOfWord(line, i);
        if (end < 0) {
            return {{}, u"this has no end"_s, i + 1};
        }
        QString const text = line.sliced(i, end - i);
        if (isJson) {
            QJsonParseError error; // in an array, since a document cannot be a bare string
            auto const json = QJsonDocument::fromJson(u"[%1]"_s.arg(text).toUtf8(), &error);
            if (json.isNull()) {
                return {{}, error.errorString(), i + 1};
            }
            if (json[0].isObject()) {
                tokens.append({text, json[0].toObject(), i + 1});
            } else {
                tokens.append({json[0].toString(), {}, i + 1});
            }
        } else {
            static QRegularExpression const beginOfJson(u"[\"{]"_s);
            if (auto const json = text.indexOf(beginOfJson); json >= 0) {
                return {{}, u"a blank is missing before this"_s, i + json + 1};
            }
            tokens.append({text, {}, i + 1});
        }
        i = end;
    }
    return {};
}

//! The words of a line behind its command, taken from the front. The first thing missing or wrong is its
//! error.
class Arguments
{
public:
    //! \a form: how the whole line is written.
    Arguments(QList<Token> tokens, qsizetype endColumn, QString form)
        : left(std::move(tokens)), lineEnd(endColumn), lineForm(std::move(form))
    {}

    bool atEnd() const { return left.isEmpty(); }
    ScriptParser::Result const& error() const { return problem; }
    //! Says more of the form, as soon as it is known.
    void setForm(QString const& form) { lineForm = form; }
    //! Of the next word, or of the end of the line.
    qsizetype column() const { return atEnd() ? lineEnd : left.first().column; }

    void fail(QString const& error, qsizetype column)
    {
        if (problem.error.isEmpty()) {
            problem.error = u"%1 (%2)"_s.arg(error, lineForm);
            problem.column = column;
        }
    }

    //! A word in the place called \a what. A place such as "on|off" takes one of its words only.
    QString word(QString const& what)
    {
        qsizetype const column = this->column();
        if (atEnd() || left.first().object) {
            fail(u"%1 is missing"_s.arg(what), column);
            return {};
        }
        QString word = left.takeFirst().text;
        if (what.contains(u'|') && !what.split(u'|').contains(word)) {
            fail(u"\"%1\" is not %2"_s.arg(word, what), column);
        }
        return word;
    }

    //! One of \a names, which are a \a what each.
    QString oneOf(QStringList const& names, QString const& what)
    {
        qsizetype const column = this->column();
        QString word = this->word(what);
        if (!names.contains(word)) {
            fail(u"\"%1\" is no %2, but these are: %3"_s.arg(word, what, names.join(u", "_s)), column);
        }
        return word;
    }

    int milliseconds() { return number(u"MS"_s, u"a number of milliseconds"_s); }
    int key() { return number(u"N"_s, u"a key, counted from 0"_s); }

    int withinIfAny()
    {
        if (atEnd() || left.first().object || left.first().text != "within"_L1) {
            return kDefaultWithinMs;
        }
        left.removeFirst();
        return milliseconds();
    }

    QJsonObject objectIfAny()
    {
        return !atEnd() && left.first().object ? *left.takeFirst().object : QJsonObject();
    }

    QJsonObject object()
    {
        if (atEnd() || !left.first().object) {
            fail(u"JSON is missing"_s, column());
        }
        return objectIfAny();
    }

    //! What is expected of something like \a sample: it has no other members.
    QJsonObject membersIfAny(QJsonObject const& sample)
    {
        if (!atEnd() && left.first().object) {
            checkMembers(left.first(), *left.first().object, sample);
        }
        return objectIfAny();
    }

    QJsonObject members(QJsonObject const& sample)
    {
        return !atEnd() && left.first().object ? membersIfAny(sample) : object();
    }

private:
    int number(QString const& what, QString const& meaning)
    {
        qsizetype const column = this->column();
        QString const word = this->word(what);
        bool ok = false;
        int const value = word.toInt(&ok);
        if (!ok || value < 0) {
            fail(u"\"%1\" is not %2"_s.arg(word, meaning), column);
        }
        return value;
    }

    void checkMembers(Token const& token, QJsonValue const& expected, QJsonValue const& sample)
    {
        if (expected.isObject() && sample.isObject()) {
            QStringList const known = sample.toObject().keys();
            QJsonObject const members = expected.toObject();
            for (auto member = members.begin(); member != members.end(); ++member) {
                if (!known.contains(member.key())) {
                    qsizetype const at = token.text.indexOf(u'"' + member.key() + u'"');
                    fail(u"\"%1\" is no member, but these are: %2"_s.arg(member.key(), known.join(u", "_s)),
                        token.column + std::max<qsizetype>(at, 0));
                }
                checkMembers(token, member.value(), sample[member.key()]);
            }
        } else if (expected.isArray() && sample.isArray() && !sample.toArray().isEmpty()) {
            for (auto const& element : expected.toArray()) {
                checkMembers(token, element, sample[0]);
            }
        }
    }

    QList<Token> left;
    qsizetype lineEnd;
    QString lineForm;
    ScriptParser::Result problem;
};

// ---- What there is to be named

using namespace SlobsAgentPrivate;

QStringList tasks()
{
    return {kQueryAuthState, kRefreshModel, kQueryStreamingStatus, kQueryRecordingStatus,
        kToggleStreamingStatus, kToggleRecordingStatus, kRefreshScenes, kQueryScenes, kSetActiveScene,
        kSetSourceVisibility, kRefreshCollections, kQueryCollections, kRefreshAudioList, kQueryAudioList,
        kSetAudioMute};
}

//! One publication of each kind, with all of its members.
QMap<QString, QJsonObject> publications()
{
    SlobsMessages::Scene scene;
    scene.nodes.append(SlobsMessages::Source());
    SlobsMessages::CollectionSchema collection;
    collection.scenes.append(scene);
    collection.sources.append(decltype(collection.sources)::value_type());
    QMap<QString, QJsonObject> samples;
    for (QJsonObject const& sample : {SlobsMessages::toAuthState(false, {}, 0),
             SlobsMessages::toStreamingStatus({}), SlobsMessages::toRecordingStatus({}),
             SlobsMessages::toSceneList(QList{scene}, {}), SlobsMessages::toCollectionList({collection}),
             SlobsMessages::toAudioList({SlobsMessages::AudioSource()})}) {
        samples.insert(sample[u"task"_s].toString(), sample);
    }
    return samples;
}

QString formOf(DesktopControl const& control)
{
    return (QStringList{u"desktop"_s, control.name} + control.places).join(u' ');
}

void readDesktop(ScriptStep& step, Arguments& arguments)
{
    QStringList names;
    std::ranges::transform(DesktopControls::all(), std::back_inserter(names), &DesktopControl::name);
    auto const* const control = DesktopControls::find(arguments.oneOf(names, u"CONTROL"_s));
    if (!control) {
        return;
    }
    arguments.setForm(formOf(*control));
    QStringList words;
    for (auto const& place : control->places) {
        words.append(arguments.word(place));
    }
    step.action = [control, words](DevHost& host) {
        return host.usesStandIn() ? DesktopControls::run(*control, host.standIn(), words)
                                  : u"a running Streamlabs Desktop is used, not the stand-in"_s;
    };
}

// ---- Commands

struct Command
{
    QString name;
    QString places;
    QString meaning;
    //! Fills the step from the words behind the command.
    void (*read)(ScriptStep&, Arguments&);
};

void readTask(ScriptStep& step, Arguments& arguments)
{
    QString const name = arguments.oneOf(tasks(), u"TASK"_s);
    step.action = [name, members = arguments.objectIfAny()](DevHost& host) {
        host.sendTask(name, members);
        return QString();
    };
}

void readHost(ScriptStep& step, Arguments& arguments)
{
    QString const what = arguments.word(u"connect|disconnect|reconnect"_s);
    bool const connects = what != "disconnect"_L1;
    QString const token = connects && !arguments.atEnd() ? arguments.word(u"TOKEN"_s) : QString();
    step.action = [what, token](DevHost& host) {
        if (what == "connect"_L1) {
            host.connectDesktop(token);
        } else if (what == "disconnect"_L1) {
            host.plugin().disconnectDesktop();
        } else {
            host.reconnectDesktop(token);
        }
        return QString();
    };
}

void readExpect(ScriptStep& step, Arguments& arguments)
{
    static auto const samples = publications();
    QString const name = arguments.oneOf(samples.keys(), u"TASK"_s);
    step.expectation = {name, arguments.membersIfAny(samples.value(name)), {}};
    step.withinMs = arguments.withinIfAny();
    step.expects = true;
}

void readExpectLed(ScriptStep& step, Arguments& arguments)
{
    QString const name = arguments.word(u"STREAM|RECORD"_s);
    step.expectation = {name, {}, arguments.word(u"on|off"_s) == "on"_L1};
    step.withinMs = arguments.withinIfAny();
    step.expects = true;
}

//! Does something with a key that must be taken.
void onKey(ScriptStep& step, int index, std::function<QString(ConsoleKey&)> const& action)
{
    step.action = [index, action](DevHost& host) {
        ConsoleKey* const key = host.console().key(index);
        return key ? action(*key) : u"there is nothing on key %1"_s.arg(index);
    };
}

void readPlace(ScriptStep& step, Arguments& arguments)
{
    QString const action = arguments.word(u"ACTION"_s);
    step.action = [action, settings = arguments.objectIfAny()](DevHost& host) {
        QString const id = host.console().actionIdOf(action == "audio"_L1 ? u"mute"_s : action);
        return host.console().place(host.console().firstFreeIndex(), id, settings)
                   ? QString()
                   : u"there is no action \"%1\", but %2"_s.arg(
                         action, host.console().actionNames().join(u", "_s));
    };
}

//! A line that waits for \a look at key \a index to include \a members.
void expectOfKey(ScriptStep& step, Arguments& arguments, int index, QJsonObject const& members,
    std::function<QJsonObject(ConsoleKey const&)> const& look)
{
    onKey(step, index, [members, look](ConsoleKey& key) {
        key.checkFace(); // so that it is told before what it leads to
        QJsonObject const seen = look(key);
        return jsonIncludes(seen, members) ? QString() : u"it is: %1"_s.arg(ScriptParser::excerpt(seen));
    });
    step.withinMs = arguments.withinIfAny();
    step.expects = true;
}

QJsonObject lookAtFace(ConsoleKey const& key)
{
    auto const face = key.face();
    return {{u"title"_s, face.title}, {u"invalid"_s, face.invalid}, {u"icon"_s, face.icon}};
}

void readExpectKey(ScriptStep& step, Arguments& arguments)
{
    static QJsonObject const sample{{u"title"_s, {}}, {u"invalid"_s, {}}, {u"icon"_s, {}}};
    int const index = arguments.key();
    expectOfKey(step, arguments, index, arguments.members(sample), lookAtFace);
}

//! A settings document keeps what a package does not know: every member is right.
void readExpectSettings(ScriptStep& step, Arguments& arguments)
{
    int const index = arguments.key();
    expectOfKey(step, arguments, index, arguments.object(), &ConsoleKey::settings);
}

void readExpectPanel(ScriptStep& step, Arguments& arguments)
{
    static QJsonObject const sample{{u"exists"_s, {}}, {u"visible"_s, {}}, {u"enabled"_s, {}},
        {u"text"_s, {}}, {u"tooltip"_s, {}}, {u"entries"_s, {}}};
    int const index = arguments.key();
    QString const objectName = arguments.word(u"OBJECTNAME"_s);
    expectOfKey(step, arguments, index, arguments.members(sample), [objectName](ConsoleKey const& key) {
        return key.panelWidget() ? PanelUser::look(*key.panelWidget(), objectName) : QJsonObject();
    });
}

//! A line about a widget in a key's panel, which waits until a person could do it.
void readPanel(ScriptStep& step, Arguments& arguments, bool withText,
    QString (*operate)(QWidget& panel, QString const& objectName, QString const& text))
{
    int const index = arguments.key();
    QString const objectName = arguments.word(u"OBJECTNAME"_s);
    QString const text = withText ? arguments.word(u"TEXT"_s) : QString();
    onKey(step, index, [=](ConsoleKey& key) {
        return key.panelWidget() ? operate(*key.panelWidget(), objectName, text) : u"the key has no panel"_s;
    });
    step.withinMs = arguments.withinIfAny();
}

QString savePicture(QPixmap const& picture, QString const& file)
{
    return picture.save(file) ? QString() : u"%1 cannot be written"_s.arg(file);
}

//! A line that saves a picture of a key's widget.
void readPicture(ScriptStep& step, Arguments& arguments, QWidget* (ConsoleKey::*widget)() const)
{
    int const index = arguments.key();
    QString const file = arguments.word(u"FILE"_s);
    onKey(step, index, [=](ConsoleKey& key) {
        QWidget* const shown = (key.*widget)();
        return shown ? savePicture(shown->grab(), file) : u"the key has none"_s;
    });
}

std::span<Command const> commands()
{
    static std::array const commands = std::to_array<Command>({
        {u"task"_s, u"TASK [JSON]"_s, u"send the service a task, such as toggleStreamingStatus"_s, readTask},
        {u"host"_s, u"connect|disconnect|reconnect [TOKEN]"_s,
            u"what the host's settings page does, with the right token or this one"_s, readHost},
        {u"expect"_s, u"TASK [JSON] [within MS]"_s,
            u"wait for a publication with that \"task\" and these members, newer than the last one expected"_s,
            readExpect},
        {u"expect-led"_s, u"STREAM|RECORD on|off [within MS]"_s, u"wait for a key LED"_s, readExpectLed},
        {u"place"_s, u"ACTION [JSON]"_s,
            u"put an action (stream, record, scene, source, mute), with these settings, on the next free key"_s,
            readPlace},
        {u"press"_s, u"N"_s, u"press key N, counted from 0: down, triggered, up"_s,
            [](ScriptStep& step, Arguments& arguments) {
                onKey(step, arguments.key(), [](ConsoleKey& key) {
                    key.press();
                    return QString();
                });
            }},
        {u"remove"_s, u"N"_s, u"take the action off key N"_s,
            [](ScriptStep& step, Arguments& arguments) {
                step.action = [index = arguments.key()](DevHost& host) {
                    return host.console().remove(index) ? QString()
                                                        : u"there is nothing on key %1"_s.arg(index);
                };
            }},
        {u"settings"_s, u"N JSON"_s, u"initialise the action on key N anew with this settings document"_s,
            [](ScriptStep& step, Arguments& arguments) {
                int const index = arguments.key();
                onKey(step, index, [settings = arguments.object()](ConsoleKey& key) {
                    key.setSettings(settings);
                    return QString();
                });
            }},
        {u"expect-key"_s, uR"(N {"title", "invalid", "icon"} [within MS])"_s,
            u"wait for a key to show this; any of the three"_s, readExpectKey},
        {u"expect-settings"_s, u"N JSON [within MS]"_s,
            u"wait for a key's settings document to include this"_s, readExpectSettings},
        {u"expect-panel"_s, uR"(N OBJECTNAME {"visible", "text", "entries", …} [within MS])"_s,
            u"wait for a widget in the panel of key N to look like this"_s, readExpectPanel},
        {u"choose"_s, u"N OBJECTNAME TEXT [within MS]"_s,
            u"choose an entry of a list in the panel of key N, as soon as a person could"_s,
            [](ScriptStep& step, Arguments& arguments) {
                readPanel(step, arguments, true, PanelUser::choose);
            }},
        {u"click"_s, u"N OBJECTNAME [within MS]"_s, u"click a button in the panel of key N"_s,
            [](ScriptStep& step, Arguments& arguments) {
                readPanel(step, arguments, false, PanelUser::click);
            }},
        {u"type"_s, u"N OBJECTNAME TEXT [within MS]"_s,
            u"replace the text of a field in the panel of key N"_s,
            [](ScriptStep& step, Arguments& arguments) {
                readPanel(step, arguments, true, PanelUser::type);
            }},
        {u"snapshot"_s, u"N FILE"_s, u"save a picture of key N"_s,
            [](ScriptStep& step, Arguments& arguments) {
                readPicture(step, arguments, &ConsoleKey::faceWidget);
            }},
        {u"panel"_s, u"N FILE"_s, u"save a picture of the panel of key N"_s,
            [](ScriptStep& step, Arguments& arguments) {
                readPicture(step, arguments, &ConsoleKey::panelWidget);
            }},
        {u"sheet"_s, u"FILE"_s, u"save a picture of the whole console"_s,
            [](ScriptStep& step, Arguments& arguments) {
                step.action = [file = arguments.word(u"FILE"_s)](DevHost& host) {
                    return savePicture(ConsoleSheet::paint(host.console()), file);
                };
            }},
        {u"desktop"_s, u"CONTROL …"_s, u"operate the stand-in, see below"_s, readDesktop},
        {u"wait"_s, u"MS"_s, u"let time pass"_s,
            [](ScriptStep& step, Arguments& arguments) { step.waitMs = arguments.milliseconds(); }},
        {u"log"_s, u"TEXT"_s, u"print a heading"_s,
            [](ScriptStep& step, Arguments& arguments) { step.note = arguments.word({}); }},
        {u"quit"_s, {}, u"end here"_s, [](ScriptStep& step, Arguments&) { step.quit = true; }},
    });
    return commands;
}

} // namespace

ScriptParser::Result ScriptParser::parse(QString const& line, int lineNumber)
{
    QString const text = line.trimmed();
    if (text.isEmpty() || text.startsWith(u'#')) {
        return {};
    }

    ScriptStep step;
    step.lineNumber = lineNumber;
    step.text = text;
    qsizetype const begin = line.indexOf(text);
    qsizetype const end = endOfWord(line, begin);
    QString const name = line.sliced(begin, end - begin);
    auto const command = std::ranges::find(commands(), name, &Command::name);
    if (command == commands().end()) {
        QStringList names;
        std::ranges::transform(commands(), std::back_inserter(names), &Command::name);
        return {{}, u"\"%1\" is no command, but these are: %2"_s.arg(name, names.join(u", "_s)), begin + 1};
    }
    QList<Token> tokens;
    if (command->name == "log"_L1) {
        tokens = {{line.sliced(end).trimmed(), {}}}; // a text is a text, quotes and braces included
    } else if (auto wrong = tokenize(line, end, tokens); !wrong.error.isEmpty()) {
        return wrong;
    }

    Arguments arguments(tokens, begin + text.size() + 1, (name + u' ' + command->places).trimmed());
    command->read(step, arguments);
    if (!arguments.atEnd()) {
        arguments.fail(u"there is more on the line than \"%1\" takes"_s.arg(name), arguments.column());
    }
    if (!arguments.error().error.isEmpty()) {
        return arguments.error();
    }
    return {step, {}, 1};
}

QString ScriptParser::excerpt(QJsonObject const& object)
{
    QString const text = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    constexpr qsizetype kLongest = 400;
    return text.size() <= kLongest ? text : text.left(kLongest) + u" …"_s;
}

QStringList ScriptParser::help()
{
    auto const row = [](QString const& form, QString const& meaning) {
        return (u"  %1  "_s.arg(form, -48) + meaning).trimmed().prepend("  "_L1);
    };
    QStringList lines;
    for (auto const& command : commands()) {
        lines.append(row(command.name + u' ' + command.places, command.meaning));
    }
    lines.append(QString());
    for (auto const& control : DesktopControls::all()) {
        QString meaning = QString(control.title).remove(u'&').replace(u'|', u", or "_s).toLower();
        lines.append(row(formOf(control), meaning.replace("api"_L1, "API"_L1)));
    }
    return lines;
}
