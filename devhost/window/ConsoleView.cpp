#include "devhost/window/ConsoleView.h"

#include "devhost/host/Console.h"
#include "devhost/window/DarkTheme.h"
#include "devhost/window/KeyView.h"
#include "ui_ConsoleView.h"

#include <QGridLayout>
#include <QMenu>
#include <QPalette>
#include <QSettings>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

//! Around all keys, px.
constexpr int kEdge = 8;

} // namespace

ConsoleView::ConsoleView(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::ConsoleView>()), grid(new QGridLayout)
{
    ui->setupUi(this);
    ui->ledStream->setFunction(u"STREAM"_s);
    ui->ledRecord->setFunction(u"RECORD"_s);

    QPalette body = palette();
    body.setColor(QPalette::Window, DarkTheme::kConsole);
    ui->body->setPalette(body);
    ui->scroll->viewport()->installEventFilter(this);
    ui->body->setLayout(grid);
    grid->setContentsMargins(kEdge, kEdge, kEdge, kEdge);
    grid->setSpacing(0);
    grid->setSizeConstraint(QLayout::SetFixedSize);

    for (QSize const size : {QSize(3, 2), QSize(4, 2), QSize(5, 3), QSize(6, 4), QSize(8, 4)}) {
        ui->boxSize->addItem(tr("%1 x %2 keys").arg(size.width()).arg(size.height()), size);
    }
    connect(ui->boxSize, &QComboBox::activated, this, [this](int row) {
        QSize const size = ui->boxSize->itemData(row).toSize();
        setSize(size.width(), size.height());
    });
    connect(ui->btnPreviousPage, &QAbstractButton::clicked, this, [this] { turnPage(-1); });
    connect(ui->btnNextPage, &QAbstractButton::clicked, this, [this] { turnPage(1); });
    for (auto* const mode : {ui->btnModeEdit, ui->btnModeLive}) {
        mode->setStyleSheet(u"QToolButton:checked { background: %1; color: black; font-weight: bold; }"_s.arg(
            DarkTheme::kAccent.name()));
    }
    connect(ui->btnModeLive, &QAbstractButton::toggled, this, [this](bool live) {
        for (auto* const view : views) {
            view->setLive(live);
        }
        emit liveChanged(live);
    });
    setSize(columnCount, rowCount);
}

ConsoleView::~ConsoleView() = default;

void ConsoleView::watch(Console& console, QHash<QString, QString> const& labels)
{
    watched = &console;
    actionLabels = labels;
    connect(&console, &Console::keyPlaced, this, [this](int index) {
        showKey(index);
        auto const* const key = watched->key(current());
        if (index == current()) {
            emit currentChanged(index);
        } else if (!key) { // nothing to look at yet
            setCurrent(index);
        }
    });
    connect(&console, &Console::keyRemoved, this, [this](int index) {
        showKey(index);
        if (index == current()) {
            emit currentChanged(index);
        }
    });
    connect(&console, &Console::faceChanged, this, [this](int index) {
        if (auto* const view = viewOf(index)) {
            view->describe();
        }
    });
    arrange();
    emit currentChanged(current());
}

// ---- Size and page

int ConsoleView::pageCount() const
{
    return (Console::kMostKeys + keysPerPage() - 1) / keysPerPage();
}

void ConsoleView::setSize(int columns, int rows)
{
    int const index = current();
    columnCount = columns;
    rowCount = rows;
    ui->boxSize->setCurrentIndex(ui->boxSize->findData(QSize(columns, rows)));
    currentPage = index / keysPerPage();
    currentPosition = index % keysPerPage();
    arrange();
}

void ConsoleView::turnPage(int by)
{
    setPage(std::clamp(currentPage + by, 0, pageCount() - 1));
}

void ConsoleView::setPage(int page)
{
    if (page != currentPage) {
        setCurrent(std::min(page * keysPerPage() + currentPosition, Console::kMostKeys - 1));
    }
}

void ConsoleView::arrange()
{
    while (views.size() < static_cast<std::size_t>(keysPerPage())) {
        views.push_back(makeView());
    }
    int position = 0;
    for (auto* const view : views) {
        grid->removeWidget(view);
        int const index = currentPage * keysPerPage() + position;
        bool const shown = position < keysPerPage() && index < Console::kMostKeys;
        if (shown) {
            grid->addWidget(view, position / columnCount, position % columnCount);
            showKey(index);
        }
        view->setCurrent(position == currentPosition);
        view->setVisible(shown);
        ++position;
    }
    magnify();
    ui->lblPage->setText(tr("Page %1 of %2").arg(currentPage + 1).arg(pageCount()));
    ui->btnPreviousPage->setEnabled(currentPage > 0);
    ui->btnNextPage->setEnabled(currentPage + 1 < pageCount());
    emit arranged();
}

//! As large as all keys of a page find room, in steps; never smaller than they are.
void ConsoleView::magnify()
{
    constexpr double kStep = 0.25;
    constexpr double kMost = 3;
    QSize const gaps(2 * KeyView::kMargin, 2 * KeyView::kMargin);
    auto const fits = [&](double factor) {
        QSize const key = ConsoleKey::kFaceSize * factor + gaps;
        QSize const room = ui->scroll->viewport()->size() - QSize(2 * kEdge, 2 * kEdge);
        return key.width() * columnCount <= room.width() && key.height() * rowCount <= room.height();
    };
    double factor = 1;
    while (factor + kStep <= kMost && fits(factor + kStep)) {
        factor += kStep;
    }
    magnification = factor;
    for (auto* const view : views) {
        view->setMagnification(magnification);
    }
}

bool ConsoleView::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::Resize) {
        magnify();
    }
    return QWidget::eventFilter(object, event);
}

// ---- Keys

KeyView* ConsoleView::makeView()
{
    auto* const view = new KeyView(ui->body);
    view->setLive(isLive());
    view->setMagnification(magnification);
    connect(view, &KeyView::chosen, this, [this, view] { setCurrent(view->index()); });
    connect(view, &KeyView::arrowPressed, this, [this](int key) { setCurrent(neighbour(key)); });
    connect(view, &KeyView::moveAsked, this, [this](int key) {
        int const to = neighbour(key);
        if (watched && watched->move(current(), to)) {
            setCurrent(to);
            focusCurrent();
        }
    });
    connect(view, &KeyView::removeAsked, this, &ConsoleView::removeCurrent);
    connect(view, &KeyView::menuAsked, this, &ConsoleView::showMenu);
    connect(view, &KeyView::actionDropped, this, [this, view](QString const& actionId) {
        if (watched && watched->place(view->index(), actionId)) {
            setCurrent(view->index());
            focusCurrent();
        }
    });
    connect(view, &KeyView::keyDropped, this, [this, view](int from) {
        if (watched && watched->move(from, view->index())) {
            setCurrent(view->index());
            focusCurrent();
        }
    });
    return view;
}

KeyView* ConsoleView::viewOf(int index) const
{
    int const position = index - currentPage * keysPerPage();
    return position >= 0 && position < keysPerPage() ? views[static_cast<std::size_t>(position)] : nullptr;
}

void ConsoleView::showKey(int index)
{
    if (auto* const view = viewOf(index)) {
        ConsoleKey* const key = watched ? watched->key(index) : nullptr;
        view->setKey(index, key, key ? actionLabels.value(key->actionId(), key->actionId()) : QString());
    }
}

void ConsoleView::setCurrent(int index)
{
    if (index < 0 || index >= Console::kMostKeys || index == current()) {
        return;
    }
    bool const hadFocus = ui->body->isAncestorOf(focusWidget());
    int const page = index / keysPerPage();
    viewOf(current())->setCurrent(false);
    currentPosition = index % keysPerPage();
    if (page != currentPage) {
        currentPage = page;
        arrange();
    }
    viewOf(index)->setCurrent(true);
    if (hadFocus) {
        focusCurrent();
    }
    emit currentChanged(index);
}

void ConsoleView::focusCurrent()
{
    auto* const view = viewOf(current());
    view->setFocus(Qt::OtherFocusReason);
    ui->scroll->ensureWidgetVisible(view, 0, 0);
}

int ConsoleView::neighbour(int key) const
{
    int column = currentPosition % columnCount;
    int row = currentPosition / columnCount;
    switch (key) {
    case Qt::Key_Left:
        --column;
        break;
    case Qt::Key_Right:
        ++column;
        break;
    case Qt::Key_Up:
        --row;
        break;
    default:
        ++row;
    }
    bool const isThere = column >= 0 && column < columnCount && row >= 0 && row < rowCount;
    return isThere ? currentPage * keysPerPage() + row * columnCount + column : current();
}

bool ConsoleView::place(QString const& actionId)
{
    for (int steps = 0; watched && steps < Console::kMostKeys; ++steps) {
        int const index = (current() + steps) % Console::kMostKeys;
        if (!watched->key(index)) {
            setCurrent(index);
            return watched->place(index, actionId);
        }
    }
    return false;
}

void ConsoleView::removeCurrent()
{
    if (watched) {
        watched->remove(current());
    }
}

void ConsoleView::setLive(bool live)
{
    (live ? ui->btnModeLive : ui->btnModeEdit)->setChecked(true);
}

bool ConsoleView::isLive() const
{
    return ui->btnModeLive->isChecked();
}

void ConsoleView::pressCurrent()
{
    if (auto* const key = watched ? watched->key(current()) : nullptr) {
        key->press();
    }
}

void ConsoleView::showMenu(QPoint const& at)
{
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    bool const taken = watched && watched->key(current());
    menu->addAction(tr("Press"), this, &ConsoleView::pressCurrent)->setEnabled(taken);
    menu->addAction(tr("Remove"), this, &ConsoleView::removeCurrent)->setEnabled(taken);
    menu->popup(at);
}

void ConsoleView::setLed(QString const& function, bool lit)
{
    for (auto* const led : {ui->ledStream, ui->ledRecord}) {
        if (led->function() == function) {
            led->setLit(lit);
        }
    }
}

// ---- Keeping

void ConsoleView::store(QSettings& settings) const
{
    settings.setValue(u"console/size"_s, QSize(columnCount, rowCount));
    settings.setValue(u"console/current"_s, current());
    settings.setValue(u"console/live"_s, isLive());
}

void ConsoleView::restore(QSettings const& settings)
{
    QSize const size = settings.value(u"console/size"_s).toSize();
    if (ui->boxSize->findData(size) >= 0) {
        setSize(size.width(), size.height());
    }
    setCurrent(settings.value(u"console/current"_s, current()).toInt());
    setLive(settings.value(u"console/live"_s, isLive()).toBool());
}
