#include "devhost/script/ScriptParser.h"

#include "devhost/host/ConsoleSheet.h"
#include "devhost/host/DevHost.h"
#include "devhost/script/PanelUser.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QList>
#include <QPointF>
#include <QRegularExpression>

#include <algorithm>
#include <array>
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

//! Splits \a line from \a begin on. The text of an error, or nothing.
QString tokenize(QString const& line, qsizetype begin, QList<Token>& tokens)
{
    for (qsizetype i = begin; i < line.size();) {
        QChar const c = line.at(i);
        if (c.isSpace()) {
            ++i;
            continue;
        }
        bool const isJson = c == u'"' || c == u'{';
        qsizetype const end = isJson ? endOfJson(line, i) : endOfWord(line, i);
        if (isJson) {
            if (end < 0) {
                return u"column %1: this has no end"_s.arg(i + 1);
            }
            QJsonParseError error; // in an array, since a document cannot be a bare string
            auto const json =
                QJsonDocument::fromJson(u"[%1]"_s.arg(line.sliced(i, end - i)).toUtf8(), &error);
            if (json.isNull()) {
                return u"column %1: %2"_s.arg(i + 1).arg(error.errorString());
            }
            if (json[0].isObject()) {
                tokens.append({{}, json[0].toObject()});
            } else {
                tokens.append({json[0].toString(), {}});
            }
        } else {
            static QRegularExpression const beginOfJson(u"[\"{]"_s);
            QString const word = line.sliced(i, end - i);
            if (auto const json = word.indexOf(beginOfJson); json >= 0) {
                return u"column %1: a blank is missing before this"_s.arg(i + json + 1);
            }
            tokens.append({word, {}});
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
    explicit Arguments(QList<Token> tokens) : left(std::move(tokens)) {}

    bool atEnd() const { return left.isEmpty(); }
    QString const& error() const { return problem; }

    void fail(QString const& error)
    {
        if (problem.isEmpty()) {
            problem = error;
        }
    }

    //! A word in the place called \a what. A place such as "on|off" takes one of its words only.
    QString word(QString const& what)
    {
        if (atEnd() || left.first().object) {
            fail(u"%1 is missing"_s.arg(what));
            return {};
        }
        QString word = left.takeFirst().text;
        if (what.contains(u'|') && !what.split(u'|').contains(word)) {
            fail(u"\"%1\" is not %2"_s.arg(word, what));
        }
        return word;
    }

    int milliseconds() { return number(u"MS"_s, u"a number of milliseconds"_s); }
    int key() { return number(u"N"_s, u"a key, counted from 0"_s); }

    int withinIfAny()
    {
        if (atEnd() || left.first().text != "within"_L1) {
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
            fail(u"JSON is missing"_s);
        }
        return objectIfAny();
    }

    QString rest()
    {
        QStringList words;
        while (!atEnd()) {
            words.append(word({}));
        }
        return words.join(u' ');
    }

private:
    int number(QString const& what, QString const& meaning)
    {
        QString const word = this->word(what);
        bool ok = false;
        int const value = word.toInt(&ok);
        if (!ok || value < 0) {
            fail(u"\"%1\" is not %2"_s.arg(word, meaning));
        }
        return value;
    }

    QList<Token> left;
    QString problem;
};

// ---- Controls of the stand-in

using Words = QStringList const&;

struct DesktopControl
{
    QString name;
    QStringList places;
    QString meaning;
    //! False when the stand-in could not do it.
    bool (*run)(DevHost&, Words);
};

StandInModel& model(DevHost& host)
{
    return host.standIn().model();
}

std::span<DesktopControl const> desktopControls()
{
    static std::array const controls = std::to_array<DesktopControl>({
        {u"start"_s, {}, u"start Streamlabs Desktop"_s,
            [](DevHost& h, Words) { return h.standIn().isRunning() || h.startStandIn(); }},
        {u"stop"_s, {}, u"quit it"_s, [](DevHost& h, Words) { return h.standIn().stop(), true; }},
        {u"drop"_s, {}, u"break its connections, as a crash does"_s,
            [](DevHost& h, Words) { return h.standIn().drop(), true; }},
        {u"token"_s, {u"TOKEN"_s}, u"change its API token"_s,
            [](DevHost& h, Words w) { return h.standIn().setToken(w[0]), true; }},
        {u"stream"_s, {u"on|off"_s}, u"go live, or end the stream"_s,
            [](DevHost& h, Words w) { return model(h).setStreaming(w[0] == "on"_L1); }},
        {u"record"_s, {u"on|off"_s}, u"start or stop recording"_s,
            [](DevHost& h, Words w) { return model(h).setRecording(w[0] == "on"_L1); }},
        {u"interrupt"_s, {}, u"let a live stream reconnect"_s,
            [](DevHost& h, Words) { return model(h).interruptStream(); }},
        {u"scene"_s, {u"SCENE"_s}, u"switch to a scene"_s,
            [](DevHost& h, Words w) { return model(h).switchScene(w[0]); }},
        {u"add-scene"_s, {u"NAME"_s}, {}, [](DevHost& h, Words w) { return model(h).addScene(w[0]); }},
        {u"remove-scene"_s, {u"SCENE"_s}, {}, [](DevHost& h, Words w) { return model(h).removeScene(w[0]); }},
        {u"rename-scene"_s, {u"SCENE"_s, u"NAME"_s}, {},
            [](DevHost& h, Words w) { return model(h).renameScene(w[0], w[1]); }},
        {u"show"_s, {u"ITEM"_s}, u"show a scene item"_s,
            [](DevHost& h, Words w) { return model(h).setItemVisible(w[0], true); }},
        {u"hide"_s, {u"ITEM"_s}, {},
            [](DevHost& h, Words w) { return model(h).setItemVisible(w[0], false); }},
        {u"drag"_s, {u"ITEM"_s}, u"move a scene item by a pixel"_s,
            [](DevHost& h, Words w) { return model(h).moveItem(w[0], QPointF(1, 1)); }},
        {u"add-item"_s, {u"SCENE"_s, u"NAME"_s}, {},
            [](DevHost& h, Words w) { return model(h).addItem(w[0], w[1]); }},
        {u"remove-item"_s, {u"ITEM"_s}, {}, [](DevHost& h, Words w) { return model(h).removeItem(w[0]); }},
        {u"rename-item"_s, {u"ITEM"_s, u"NAME"_s}, {},
            [](DevHost& h, Words w) { return model(h).renameItem(w[0], w[1]); }},
        {u"mute"_s, {u"AUDIO"_s}, u"mute an audio source"_s,
            [](DevHost& h, Words w) { return model(h).setMuted(w[0], true); }},
        {u"unmute"_s, {u"AUDIO"_s}, {}, [](DevHost& h, Words w) { return model(h).setMuted(w[0], false); }},
        {u"add-audio"_s, {u"NAME"_s}, {}, [](DevHost& h, Words w) { return model(h).addAudioSource(w[0]); }},
        {u"remove-audio"_s, {u"AUDIO"_s}, {},
            [](DevHost& h, Words w) { return model(h).removeAudioSource(w[0]); }},
        {u"rename-audio"_s, {u"AUDIO"_s, u"NAME"_s}, {},
            [](DevHost& h, Words w) { return model(h).renameAudioSource(w[0], w[1]); }},
        {u"collection"_s, {u"COLLECTION"_s}, u"switch to a scene collection"_s,
            [](DevHost& h, Words w) { return model(h).switchCollection(w[0]); }},
        {u"add-collection"_s, {u"NAME"_s}, {},
            [](DevHost& h, Words w) { return model(h).addCollection(w[0]); }},
        {u"remove-collection"_s, {u"COLLECTION"_s}, {},
            [](DevHost& h, Words w) { return model(h).removeCollection(w[0]); }},
    });
    return controls;
}

void readDesktop(ScriptStep& step, Arguments& arguments)
{
    QString const name = arguments.word(u"control"_s);
    auto const control = std::ranges::find(desktopControls(), name, &DesktopControl::name);
    if (control == desktopControls().end()) {
        arguments.fail(u"\"%1\" is no control of Streamlabs Desktop"_s.arg(name));
        return;
    }
    QStringList words;
    for (auto const& place : control->places) {
        words.append(arguments.word(place));
    }
    step.action = [run = control->run, words](DevHost& host) {
        if (!host.usesStandIn()) {
            return u"a running Streamlabs Desktop is used, not the stand-in"_s;
        }
        return run(host, words) ? QString() : u"the stand-in cannot do that"_s;
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
    QString const name = arguments.word(u"NAME"_s);
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
    ScriptStep::Expectation expectation;
    expectation.name = arguments.word(u"TASK"_s);
    expectation.members = arguments.objectIfAny();
    expectation.withinMs = arguments.withinIfAny();
    step.expectation = expectation;
}

void readExpectLed(ScriptStep& step, Arguments& arguments)
{
    ScriptStep::Expectation expectation;
    expectation.kind = ScriptStep::Expectation::Kind::Led;
    expectation.name = arguments.word(u"STREAM|RECORD"_s);
    expectation.on = arguments.word(u"on|off"_s) == "on"_L1;
    expectation.withinMs = arguments.withinIfAny();
    step.expectation = expectation;
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
                   : u"the package has no action \"%1\""_s.arg(action);
    };
}

void readExpectKey(ScriptStep& step, Arguments& arguments)
{
    ScriptStep::Expectation expectation;
    expectation.kind = ScriptStep::Expectation::Kind::Key;
    expectation.key = arguments.key();
    expectation.members = arguments.object();
    expectation.withinMs = arguments.withinIfAny();
    step.expectation = expectation;
}

void readExpectSettings(ScriptStep& step, Arguments& arguments)
{
    readExpectKey(step, arguments);
    step.expectation->kind = ScriptStep::Expectation::Kind::Settings;
}

void readExpectPanel(ScriptStep& step, Arguments& arguments)
{
    ScriptStep::Expectation expectation;
    expectation.kind = ScriptStep::Expectation::Kind::Panel;
    expectation.key = arguments.key();
    expectation.objectName = arguments.word(u"OBJECTNAME"_s);
    expectation.members = arguments.object();
    expectation.withinMs = arguments.withinIfAny();
    step.expectation = expectation;
}

//! A line about a widget in a key's panel.
void readPanel(ScriptStep& step, Arguments& arguments, bool withText,
    QString (*operate)(QWidget& panel, QString const& objectName, QString const& text))
{
    int const index = arguments.key();
    QString const objectName = arguments.word(u"OBJECTNAME"_s);
    QString const text = withText ? arguments.word(u"TEXT"_s) : QString();
    onKey(step, index, [=](ConsoleKey& key) {
        return key.panelWidget() ? operate(*key.panelWidget(), objectName, text) : u"the key has no panel"_s;
    });
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
        {u"task"_s, u"NAME [JSON]"_s, u"send the service a task, such as toggleStreamingStatus"_s, readTask},
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
        {u"choose"_s, u"N OBJECTNAME TEXT"_s, u"choose an entry of a list in the panel of key N"_s,
            [](ScriptStep& step, Arguments& arguments) {
                readPanel(step, arguments, true, PanelUser::choose);
            }},
        {u"click"_s, u"N OBJECTNAME"_s, u"click a button in the panel of key N"_s,
            [](ScriptStep& step, Arguments& arguments) {
                readPanel(step, arguments, false, PanelUser::click);
            }},
        {u"type"_s, u"N OBJECTNAME TEXT"_s, u"replace the text of a field in the panel of key N"_s,
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
            [](ScriptStep& step, Arguments& arguments) { step.note = arguments.rest(); }},
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
        return {{}, u"\"%1\" is no command"_s.arg(name)};
    }
    QList<Token> tokens;
    if (command->name == "log"_L1) {
        tokens = {{line.sliced(end).trimmed(), {}}}; // a text is a text, quotes and braces included
    } else if (QString const error = tokenize(line, end, tokens); !error.isEmpty()) {
        return {{}, error};
    }

    Arguments arguments(tokens);
    command->read(step, arguments);
    if (arguments.error().isEmpty() && !arguments.atEnd()) {
        arguments.fail(u"there is more on the line than \"%1\" takes"_s.arg(name));
    }
    if (!arguments.error().isEmpty()) {
        return {{}, u"%1 (%2 %3)"_s.arg(arguments.error(), command->name, command->places)};
    }
    return {step, {}};
}

QStringList ScriptParser::help()
{
    auto const row = [](QString const& form, QString const& meaning) {
        return (u"  %1"_s.arg(form, -44) + u' ' + meaning).trimmed().prepend("  "_L1);
    };
    QStringList lines;
    for (auto const& command : commands()) {
        lines.append(row(command.name + u' ' + command.places, command.meaning));
    }
    lines.append(QString());
    for (auto const& control : desktopControls()) {
        lines.append(
            row((QStringList{u"desktop"_s, control.name} + control.places).join(u' '), control.meaning));
    }
    return lines;
}
