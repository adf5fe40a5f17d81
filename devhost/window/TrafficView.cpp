#include "devhost/window/TrafficView.h"

#include "devhost/host/DevHost.h"
#include "ui_TrafficView.h"

#include <QFontDatabase>
#include <QJsonDocument>
#include <QScrollBar>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The messages of a SockJS frame as they were before they were put into it.
QString unwrapped(QString const& frame)
{
    qsizetype const begin = frame.startsWith("a[\""_L1) ? 3 : frame.startsWith("[\""_L1) ? 2 : 0;
    if (begin == 0) {
        return frame; // there are none
    }
    QString text = frame.sliced(begin);
    if (text.endsWith("\"]"_L1)) {
        text.chop(2);
    }
    return text.replace("\\\""_L1, "\""_L1).replace("\\\\"_L1, "\\"_L1);
}

} // namespace

TrafficView::TrafficView(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::TrafficView>())
{
    ui->setupUi(this);
    filter.setSourceModel(&model);
    ui->lines->setModel(&filter);
    ui->details->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    int const digits = fontMetrics().horizontalAdvance(u"00:00:00.000"_s);
    int const names = fontMetrics().horizontalAdvance(u"Streamlabs Desktop → service"_s);
    constexpr int kPadding = 16;
    ui->lines->setColumnWidth(TrafficModel::TimeColumn, digits + kPadding);
    ui->lines->setColumnWidth(TrafficModel::WayColumn, names + kPadding);
    ui->split->setStretchFactor(0, 3);
    ui->split->setStretchFactor(1, 2);

    connect(ui->edtFilter, &QLineEdit::textChanged, this, [this](QString const& words) {
        filter.setWords(words);
        showCount();
    });
    connect(ui->btnPause, &QToolButton::toggled, this, [this](bool paused) { listen(!paused); });
    connect(ui->btnClear, &QToolButton::clicked, &model, &TrafficModel::clear);
    connect(
        ui->lines->selectionModel(), &QItemSelectionModel::currentChanged, this, &TrafficView::showDetails);
    connect(&model, &TrafficModel::modelReset, this, &TrafficView::showCount);
    connect(&filter, &QAbstractItemModel::rowsAboutToBeInserted, this, [this] {
        auto const* const bar = ui->lines->verticalScrollBar();
        atEnd = bar->value() == bar->maximum();
    });
    connect(&model, &QAbstractItemModel::rowsInserted, this, [this] {
        showCount();
        if (atEnd) {
            ui->lines->scrollToBottom();
        }
    });
    showCount();
}

TrafficView::~TrafficView() = default;

void TrafficView::focusFilter()
{
    ui->edtFilter->setFocus(Qt::ShortcutFocusReason);
}

void TrafficView::watch(DevHost& host)
{
    devHost = &host;
    listen(!ui->btnPause->isChecked());
    showCount();
}

void TrafficView::listen(bool on)
{
    for (auto const& connection : std::as_const(connections)) {
        disconnect(connection);
    }
    connections.clear();
    if (!on || !devHost) {
        return;
    }
    auto const client = [](int number) { return number == 0 ? tr("service") : tr("client %1").arg(number); };
    auto& relay = devHost->relay();
    auto& desktop = devHost->standIn().transport();
    connections = {
        connect(&relay, &RelayServer::messageReceived, this,
            [this, client](int number, QString const& text) {
                model.add(tr("%1 → relay").arg(client(number)), text, text.size());
            }),
        connect(&relay, &RelayServer::messageSent, this,
            [this, client](int number, QString const& text) {
                model.add(tr("relay → %1").arg(client(number)), text, text.size());
            }),
        connect(&desktop, &SockJsServer::frameReceived, this,
            [this](int, QString const& frame) { addFrame(tr("service → Streamlabs Desktop"), frame); }),
        connect(&desktop, &SockJsServer::frameSent, this,
            [this](int, QString const& frame) { addFrame(tr("Streamlabs Desktop → service"), frame); }),
    };
}

void TrafficView::addFrame(QString const& way, QString const& frame)
{
    constexpr qsizetype kEnough = 2 * TrafficModel::kLongestText; // at worst every character is escaped
    QString const text = unwrapped(frame.left(kEnough));
    model.add(way, text, text.size() + std::max<qsizetype>(0, frame.size() - kEnough));
}

void TrafficView::showDetails(QModelIndex const& current)
{
    QString const text = current.data(TrafficModel::kWholeTextRole).toString();
    auto const document = QJsonDocument::fromJson(text.toUtf8());
    ui->details->setPlainText(document.isNull() ? text : QString::fromUtf8(document.toJson()));
}

void TrafficView::showCount()
{
    int const all = model.rowCount();
    int const shown = filter.rowCount();
    QString const count =
        shown == all ? tr("%1 messages").arg(all) : tr("%1 of %2 messages").arg(shown).arg(all);
    bool const hearsBoth = !devHost || devHost->usesStandIn();
    ui->lblCount->setText(
        hearsBoth ? count : tr("%1 of the relay; a running Streamlabs Desktop cannot be heard").arg(count));
}
