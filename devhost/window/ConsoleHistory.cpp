#include "devhost/window/ConsoleHistory.h"

#include "devhost/host/Console.h"

#include <algorithm>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

class ConsoleHistory::Step final : public QUndoCommand
{
public:
    Step(ConsoleHistory& owner, KeyStates earlier, KeyStates later)
        : history(owner), before(std::move(earlier)), after(std::move(later))
    {
        setText(description());
    }

    void undo() override { history.apply(before); }
    void redo() override
    {
        if (isDone) { // the stack does so with each new step
            history.apply(after);
        }
        isDone = true;
    }

    int id() const override
    {
        constexpr int kTyping = 1;
        return isTyping() ? kTyping : -1;
    }
    bool mergeWith(QUndoCommand const* next) override
    {
        auto const& later = static_cast<Step const&>(*next);
        if (before.firstKey() != later.before.firstKey()) {
            return false;
        }
        after = later.after;
        setObsolete(before == after);
        return true;
    }

private:
    //! Nothing but the titles of one key.
    bool isTyping() const
    {
        KeyState earlier = before.first();
        KeyState later = after.first();
        earlier.settings.remove("titlelist"_L1);
        later.settings.remove("titlelist"_L1);
        return before.size() == 1 && !later.actionId.isEmpty() && earlier == later;
    }

    QString description() const
    {
        if (before.size() > 1) {
            auto const removes = [](KeyState const& state) { return state.actionId.isEmpty(); };
            bool const placesOnly = std::ranges::all_of(before, removes);
            return placesOnly ? tr("placing actions") : tr("moving a key");
        }
        auto const& earlier = before.first();
        auto const& later = after.first();
        if (earlier.actionId != later.actionId) {
            bool const removes = later.actionId.isEmpty();
            QString const name = (removes ? earlier : later).actionId.section(u'.', -1);
            return removes ? tr("removing %1").arg(name) : tr("placing %1").arg(name);
        }
        auto const differs = [&](QString const& member) {
            return earlier.settings.value(member) != later.settings.value(member);
        };
        QString const what = differs(u"titlelist"_s)  ? tr("the title of key %1")
                             : differs(u"iconlist"_s) ? tr("the picture of key %1")
                                                      : tr("the settings of key %1");
        return what.arg(before.firstKey());
    }

    ConsoleHistory& history;
    KeyStates before;
    KeyStates after;
    bool isDone = false;
};

ConsoleHistory::ConsoleHistory(Console& console, QObject* parent) : QObject(parent), watched(console)
{
    recording.setSingleShot(true);
    recording.setInterval(0);
    recording.callOnTimeout(this, &ConsoleHistory::record);
    for (auto const signal : {&Console::keyPlaced, &Console::keyRemoved, &Console::settingsChanged}) {
        connect(&watched, signal, this, &ConsoleHistory::note);
    }
    restart();
}

ConsoleHistory::~ConsoleHistory() = default;

void ConsoleHistory::restart()
{
    steps.clear();
    touched.clear();
    known.clear();
    for (int const index : watched.indices()) {
        known.insert(index, stateOf(index));
    }
}

ConsoleHistory::KeyState ConsoleHistory::stateOf(int index) const
{
    auto const* const key = watched.key(index);
    return key ? KeyState{key->actionId(), key->settings()} : KeyState();
}

void ConsoleHistory::note(int index)
{
    touched.insert(index);
    recording.start();
}

void ConsoleHistory::record()
{
    KeyStates before;
    KeyStates after;
    for (int const index : std::exchange(touched, {})) {
        KeyState const now = stateOf(index);
        if (now != known.value(index)) {
            before.insert(index, known.value(index));
            after.insert(index, now);
            known.insert(index, now);
        }
    }
    if (!before.isEmpty()) {
        steps.push(std::make_unique<Step>(*this, before, after).release());
    }
}

void ConsoleHistory::apply(KeyStates const& states)
{
    for (auto const& [index, state] : states.asKeyValueRange()) {
        auto* const key = watched.key(index);
        if (state.actionId.isEmpty()) {
            watched.remove(index);
        } else if (key && key->actionId() == state.actionId) {
            key->setSettings(state.settings);
        } else {
            watched.place(index, state.actionId, state.settings);
        }
        known.insert(index, stateOf(index));
    }
}
