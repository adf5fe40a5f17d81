#include "devhost/window/TrafficView.h"

#include "devhost/host/DevHost.h"
#include "ui_TrafficView.h"

#include <QFontDatabase>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
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
    int const tasks = fontMetrics().horizontalAdvance(u"onQueryRecordingStatus"_s);
    constexpr int kPadding = 16;
    ui->lines->setColumnWidth(TrafficModel::TimeColumn, digits + kPadding);
    ui->lines->setColumnWidth(TrafficModel::WayColumn, names + kPadding);
    ui->lines->setColumnWidth(TrafficModel::TaskColumn, tasks + kPadding);
    ui->split->setStretchFactor(0, 5);
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
    connect(&model, &QAbstractItemModel::rowsInserted, this, &TrafficView::showCount);
    // The range follows the lines, if late: only when they have been laid out. The value is what one scrolls.
    auto* const bar = ui->lines->verticalScrollBar();
    connect(bar, &QScrollBar::rangeChanged, this, [this, bar](int, int end) {
        if (follows) {
            bar->setValue(end);
        }
    });
    connect(
        bar, &QScrollBar::valueChanged, this, [this, bar](int value) { follows = value == bar->maximum(); });
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
    auto& relay = devHost->relay();
    auto& desktop = devHost->standIn().transport();
    connections = {
        connect(&relay, &RelayServer::messageReceived, this,
            [this](
                int client, QString const& text) { addMessage(tr("%1 → relay").arg(nameOf(client)), text); }),
        connect(&relay, &RelayServer::messageSent, this,
            [this](
                int client, QString const& text) { addMessage(tr("relay → %1").arg(nameOf(client)), text); }),
        connect(&desktop, &SockJsServer::frameReceived, this,
            [this](int, QString const& frame) { addFrame(tr("service → Streamlabs Desktop"), frame); }),
        connect(&desktop, &SockJsServer::frameSent, this,
            [this](int, QString const& frame) { addFrame(tr("Streamlabs Desktop → service"), frame); }),
    };
}

QString TrafficView::nameOf(int client) const
{
    if (client == 0) {
        return tr("service");
    }
    QString const name = devHost->relay().clientName(client);
    return name.isEmpty() ? tr("client %1").arg(client) : tr("client %1, %2").arg(client).arg(name);
}

QString TrafficView::taskOf(QString const& text)
{
    constexpr qsizetype kShort = TrafficModel::kLongestText;
    if (text.size() >
        kShort) { // a list, which is not read for its name: the one stands before it, the other behind
        static QRegularExpression const answered(uR"(^\{"id":"?(\w+))"_s);
        static QRegularExpression const published(uR"x("task":"(\w+)"\}$)x"_s);
        auto const answer = answered.match(text.left(kShort));
        return answer.hasMatch() ? asked.take(answer.captured(1))
                                 : published.match(text.right(kShort)).captured(1);
    }
    QJsonObject const message = QJsonDocument::fromJson(text.toUtf8()).object();
    if (message.contains("jsonrpc"_L1)) {
        QString const id = message.value("id"_L1).toVariant().toString();
        if (message.contains("method"_L1)) {
            QString method = message.value("method"_L1).toString();
            asked.insert(id, method);
            return method;
        }
        QString const event = message.value("result"_L1)[u"resourceId"_s].toString().section(u'.', -1);
        return message.value("id"_L1).isNull() ? event : asked.take(id);
    }
    QString const event = message.value("event"_L1).toString();
    return event.isEmpty() ? message.value("task"_L1).toString() : event;
}

void TrafficView::addMessage(QString const& way, QString const& text)
{
    model.add(way, taskOf(text), text, text.size());
}

void TrafficView::addFrame(QString const& way, QString const& frame)
{
    constexpr qsizetype kEnough = 2 * TrafficModel::kLongestText; // at worst every character is escaped
    QString const text = unwrapped(frame.left(kEnough));
    model.add(way, taskOf(text), text, text.size() + std::max<qsizetype>(0, frame.size() - kEnough));
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
