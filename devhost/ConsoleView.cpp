#include "devhost/ConsoleView.h"

#include "devhost/Console.h"
#include "devhost/DarkTheme.h"
#include "devhost/KeyView.h"
#include "ui_ConsoleView.h"

#include <QGridLayout>
#include <QMenu>
#include <QPalette>
#include <QSettings>

#include <algorithm>

using namespace Qt::StringLiterals;

ConsoleView::ConsoleView(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::ConsoleView>()), m_grid(new QGridLayout)
{
    ui->setupUi(this);
    ui->ledStream->setFunction(u"STREAM"_s);
    ui->ledRecord->setFunction(u"RECORD"_s);

    QPalette body = palette();
    body.setColor(QPalette::Window, DarkTheme::console);
    ui->body->setPalette(body);
    ui->body->setLayout(m_grid);
    constexpr int margin = 8;
    m_grid->setContentsMargins(margin, margin, margin, margin);
    m_grid->setSpacing(0);
    m_grid->setSizeConstraint(QLayout::SetFixedSize);

    for (QSize const size : {QSize(3, 2), QSize(4, 2), QSize(5, 3), QSize(6, 4), QSize(8, 4)}) {
        ui->boxSize->addItem(tr("%1 x %2 keys").arg(size.width()).arg(size.height()), size);
    }
    connect(ui->boxSize, &QComboBox::activated, this, [this](int row) {
        QSize const size = ui->boxSize->itemData(row).toSize();
        setSize(size.width(), size.height());
    });
    connect(ui->btnPreviousPage, &QAbstractButton::clicked, this, [this] { turnPage(-1); });
    connect(ui->btnNextPage, &QAbstractButton::clicked, this, [this] { turnPage(1); });
    setSize(m_columns, m_rows);
}

ConsoleView::~ConsoleView() = default;

void ConsoleView::watch(Console& console, QHash<QString, QString> const& labels)
{
    m_console = &console;
    m_labels = labels;
    connect(&console, &Console::keyPlaced, this, [this](int index) {
        showKey(index);
        auto const* const key = m_console->key(current());
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
    return (Console::mostKeys + keysPerPage() - 1) / keysPerPage();
}

void ConsoleView::setSize(int columns, int rows)
{
    int const index = current();
    m_columns = columns;
    m_rows = rows;
    ui->boxSize->setCurrentIndex(ui->boxSize->findData(QSize(columns, rows)));
    m_page = index / keysPerPage();
    m_position = index % keysPerPage();
    arrange();
}

void ConsoleView::turnPage(int by)
{
    setPage(std::clamp(m_page + by, 0, pageCount() - 1));
}

void ConsoleView::setPage(int page)
{
    if (page != m_page) {
        setCurrent(std::min(page * keysPerPage() + m_position, Console::mostKeys - 1));
    }
}

void ConsoleView::arrange()
{
    while (m_views.size() < static_cast<std::size_t>(keysPerPage())) {
        m_views.push_back(makeView());
    }
    int position = 0;
    for (auto* const view : m_views) {
        m_grid->removeWidget(view);
        int const index = m_page * keysPerPage() + position;
        bool const shown = position < keysPerPage() && index < Console::mostKeys;
        if (shown) {
            m_grid->addWidget(view, position / m_columns, position % m_columns);
            showKey(index);
        }
        view->setCurrent(position == m_position);
        view->setVisible(shown);
        ++position;
    }
    ui->lblPage->setText(tr("Page %1 of %2").arg(m_page + 1).arg(pageCount()));
    ui->btnPreviousPage->setEnabled(m_page > 0);
    ui->btnNextPage->setEnabled(m_page + 1 < pageCount());
    emit arranged();
}

// ---- Keys

KeyView* ConsoleView::makeView()
{
    auto* const view = new KeyView(ui->body);
    connect(view, &KeyView::chosen, this, [this, view] { setCurrent(view->index()); });
    connect(view, &KeyView::arrowPressed, this, [this](int key) { setCurrent(neighbour(key)); });
    connect(view, &KeyView::moveAsked, this, [this](int key) {
        int const to = neighbour(key);
        if (m_console && m_console->move(current(), to)) {
            setCurrent(to);
            focusCurrent();
        }
    });
    connect(view, &KeyView::removeAsked, this, &ConsoleView::removeCurrent);
    connect(view, &KeyView::menuAsked, this, &ConsoleView::showMenu);
    connect(view, &KeyView::actionDropped, this, [this, view](QString const& actionId) {
        if (m_console && m_console->place(view->index(), actionId)) {
            setCurrent(view->index());
            focusCurrent();
        }
    });
    connect(view, &KeyView::keyDropped, this, [this, view](int from) {
        if (m_console && m_console->move(from, view->index())) {
            setCurrent(view->index());
            focusCurrent();
        }
    });
    return view;
}

KeyView* ConsoleView::viewOf(int index) const
{
    int const position = index - m_page * keysPerPage();
    return position >= 0 && position < keysPerPage() ? m_views[static_cast<std::size_t>(position)] : nullptr;
}

void ConsoleView::showKey(int index)
{
    if (auto* const view = viewOf(index)) {
        ConsoleKey* const key = m_console ? m_console->key(index) : nullptr;
        view->setKey(index, key, key ? m_labels.value(key->actionId(), key->actionId()) : QString());
    }
}

void ConsoleView::setCurrent(int index)
{
    if (index < 0 || index >= Console::mostKeys || index == current()) {
        return;
    }
    bool const hadFocus = ui->body->isAncestorOf(focusWidget());
    int const page = index / keysPerPage();
    viewOf(current())->setCurrent(false);
    m_position = index % keysPerPage();
    if (page != m_page) {
        m_page = page;
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
    int column = m_position % m_columns;
    int row = m_position / m_columns;
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
    bool const isThere = column >= 0 && column < m_columns && row >= 0 && row < m_rows;
    return isThere ? m_page * keysPerPage() + row * m_columns + column : current();
}

bool ConsoleView::place(QString const& actionId)
{
    for (int steps = 0; m_console && steps < Console::mostKeys; ++steps) {
        int const index = (current() + steps) % Console::mostKeys;
        if (!m_console->key(index)) {
            setCurrent(index);
            return m_console->place(index, actionId);
        }
    }
    return false;
}

void ConsoleView::removeCurrent()
{
    if (m_console) {
        m_console->remove(current());
    }
}

void ConsoleView::pressCurrent()
{
    if (auto* const key = m_console ? m_console->key(current()) : nullptr) {
        key->press();
    }
}

void ConsoleView::showMenu(QPoint const& at)
{
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    bool const taken = m_console && m_console->key(current());
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
    settings.setValue(u"console/size"_s, QSize(m_columns, m_rows));
    settings.setValue(u"console/current"_s, current());
}

void ConsoleView::restore(QSettings const& settings)
{
    QSize const size = settings.value(u"console/size"_s).toSize();
    if (ui->boxSize->findData(size) >= 0) {
        setSize(size.width(), size.height());
    }
    setCurrent(settings.value(u"console/current"_s, current()).toInt());
}
