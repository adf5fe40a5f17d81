#include "actions/BaseSlobsPropertyView.h"

#include "actions/SlobsPanelMessages.h"
#include "uikit/BasePropertyWidget.h"
#include "uikit/ChoiceBox.h"
#include "uikit/Visibility.h"

#include <QEvent>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStandardItemModel>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

//! Once for all panels; the frame has its own.
QString panelStyle()
{
    return uR"(
BaseSlobsPropertyView { background: rgb(40,40,40); }
#txtSceneListTitle, #txtSceneItemListTitle, #txtAudioListTitle { color: rgb(161,161,161); font: bold 12px; }
#txtWarningMessage { color: #ffb84d; font-size: 12px; }
#txtChoiceHint { color: rgb(161,161,161); font-size: 12px; }
BaseSlobsPropertyView > QComboBox { background: #1e1e1e; color: white; font: bold 12px; border: none; border-radius: 3px; padding: 0 7px; }
BaseSlobsPropertyView > QComboBox:focus { border: 1px solid #ff9900; padding: 0 6px; }
BaseSlobsPropertyView > QComboBox::drop-down { border: none; width: 24px; }
BaseSlobsPropertyView > QComboBox::down-arrow { image: url(:/images/component_btn_combo_arrow_n.svg); width: 12px; height: 12px; }
BaseSlobsPropertyView > QComboBox::down-arrow:hover { image: url(:/images/component_btn_combo_arrow_m.svg); }
BaseSlobsPropertyView > QComboBox QAbstractItemView { background: #1e1e1e; color: white; border: 1px solid black; outline: none; }
BaseSlobsPropertyView > QComboBox QAbstractItemView::item { height: 24px; padding-left: 5px; background: transparent; }
BaseSlobsPropertyView > QComboBox QAbstractItemView::item:selected { background: #ff9900; color: black; }
BaseSlobsPropertyView > QComboBox QAbstractItemView::item:disabled { background: rgb(45,45,45); color: rgb(110,110,110); }
#btnRefresh, #btnGoAuth, #btnCollectionTip { border: none; border-radius: 3px; background: transparent; }
#btnRefresh:focus, #btnGoAuth:focus, #btnCollectionTip:focus { border: 1px solid #ff9900; }
#btnRefresh { image: url(:/images/component_btn_refresh_n.svg); }
#btnRefresh:hover { image: url(:/images/component_btn_refresh_m.svg); }
#btnRefresh:pressed { image: url(:/images/component_btn_refresh_c.svg); }
#btnGoAuth { image: url(:/images/component_btn_window_stting_n.svg); }
#btnGoAuth:hover { image: url(:/images/component_btn_window_stting_m.svg); }
#btnGoAuth:pressed { image: url(:/images/component_btn_window_stting_c.svg); }
#btnCollectionTip { image: url(:/images/component_btn_tip_n.svg); }
#btnCollectionTip:hover { image: url(:/images/component_btn_tip_m.svg); }
QToolTip { color: white; background: rgb(30,30,30); border: 1px solid black; font-size: 12px; }
)"_s;
}

} // namespace

BaseSlobsPropertyView::BaseSlobsPropertyView(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_StyledBackground);
}

void BaseSlobsPropertyView::init(BasePropertyWidget* widget)
{
    Visibility::styleWhenShown(this);
    frame = widget;
    stateNames.clear();
    if (!frame) {
        return;
    }
    frame->setCurrentId(0);
    frame->setIconType(BaseIconProperty::Changeable, false);
    frame->setIconChangeable(true);
    frame->setTextEditable(true);
    connect(frame, &BasePropertyWidget::pluginTitleChanged, this, &BaseSlobsPropertyView::titleChanged);
    connect(frame, &BasePropertyWidget::pluginIconChanged, this, &BaseSlobsPropertyView::assetChanged);
    connect(
        frame, &BasePropertyWidget::viewAttributeChanged, this, &BaseSlobsPropertyView::viewAttributeChanged);
}

void BaseSlobsPropertyView::setupWidgetStates(
    QList<QString> const& titles, QList<QString> const& icons, int current)
{
    if (!frame) {
        return;
    }
    frame->setPluginTitleList(titles);
    frame->setPluginIconList(icons);
    // The frame keeps replaced buttons, so it gets new ones only for new names.
    if (titles.size() >= 2 && titles != stateNames) {
        frame->generateButtonsByStateNames(titles, true);
        stateNames = titles;
    }
    frame->setCurrentId(current);
}

void BaseSlobsPropertyView::setDefaultIcons(QList<QString> const& icons)
{
    if (frame) {
        frame->setDefaultIconList(icons);
    }
}

void BaseSlobsPropertyView::setActionModeState()
{
    if (frame) {
        frame->hideButtons();
        frame->setTitleIsReadOnly(true);
        frame->setIconChangeable(false);
        frame->setTextEditable(false);
    }
}

void BaseSlobsPropertyView::setViewAttribute(ZoDisplayViewAttribute const& attribute)
{
    if (frame) {
        frame->setViewAttribute(attribute);
    }
}

void BaseSlobsPropertyView::adjustView(ZoDisplayViewAttribute const& attribute)
{
    if (frame) {
        frame->adjustTextLabel(attribute);
    }
}

void BaseSlobsPropertyView::addDisabledItemToLast(QComboBox* box, QString const& text, QVariant const& data)
{
    box->addItem(text, data);
    if (auto* model = qobject_cast<QStandardItemModel*>(box->model())) {
        auto* item = model->item(box->count() - 1);
        item->setFlags(item->flags() & ~Qt::ItemIsEnabled);
    }
}

QString BaseSlobsPropertyView::nameOf(
    QList<Choice> const& choices, QString const& id, QString const& fallback)
{
    auto const choice = std::ranges::find(choices, id, &Choice::id);
    return choice == choices.end() ? fallback : choice->name;
}

BaseSlobsPropertyView::Selection BaseSlobsPropertyView::fillChoices(
    ChoiceBox* box, QList<Choice> choices, Choice const& configured)
{
    bool const missing =
        !configured.id.isEmpty() && std::ranges::find(choices, configured.id, &Choice::id) == choices.end();
    qsizetype const enabled = choices.size();
    if (missing) {
        choices.append(configured);
    }

    QSignalBlocker const noEcho(box);
    // Lists come many times a second while somebody drags an item, and are mostly the same for this box.
    if (auto& last = filled[box]; last.enabled != enabled || last.choices != choices) {
        last = {choices, enabled};
        box->clear();
        for (auto const& choice : std::as_const(choices).first(enabled)) {
            box->addItem(choice.name, choice.id);
        }
        if (missing) {
            addDisabledItemToLast(box, configured.name, configured.id);
        }
        box->tellApart();
    }
    if (!choices.isEmpty()) {
        auto const chosen = std::ranges::find(choices, configured.id, &Choice::id);
        box->setCurrentIndex(
            configured.id.isEmpty() ? 0 : static_cast<int>(std::distance(choices.begin(), chosen)));
    }
    return missing                                         ? Selection::Missing
           : configured.id.isEmpty() && !choices.isEmpty() ? Selection::Nothing
                                                           : Selection::Fine;
}

// ---- The login pane

void BaseSlobsPropertyView::registerLoginPane(QPushButton* button, QLabel* label)
{
    if (!button || !label) {
        return;
    }
    loginButton = button;
    loginLabel = label;
    loginButton->hide();
    loginLabel->clear();
    loginLabel->hide();
    connect(loginButton, &QPushButton::clicked, this, &BaseSlobsPropertyView::onLoginButtonClicked);
}

void BaseSlobsPropertyView::onLoginButtonClicked()
{
    emit sendToWidget(SlobsPanelMessages::toOpenLogin());
}

void BaseSlobsPropertyView::onWidgetMessageReceived([[maybe_unused]] QJsonObject const& message) {}

void BaseSlobsPropertyView::onStreamlabsStateChanged(bool isAuthorized, QString const& newToken, int newPort)
{
    link = {isAuthorized, newToken, newPort};
    showPane();
}

void BaseSlobsPropertyView::registerChoiceHint(QLabel* label)
{
    choiceHint = label;
    choiceHint->clear();
    choiceHint->hide();
}

void BaseSlobsPropertyView::showSelection(Selection newSelection)
{
    selection = newSelection;
    showPane();
}

void BaseSlobsPropertyView::showPane()
{
    if (!loginButton || !loginLabel) {
        return;
    }
    QString text;
    if (!link.isUp()) {
        text = tr("LAB_PLUGIN_LAUNCH_STLOBS");
    } else if (selection == Selection::Missing) {
        text = tr("LAB_INVALID_SELECTION");
    }
    loginLabel->setText(text);
    Visibility::set(loginLabel, !text.isEmpty());
    Visibility::set(loginButton, !link.isUp());
    if (choiceHint) {
        bool const asks = text.isEmpty() && selection == Selection::Nothing;
        choiceHint->setText(asks ? tr("LAB_NOTHING_CHOSEN") : QString());
        Visibility::set(choiceHint, asks);
    }
}

bool BaseSlobsPropertyView::event(QEvent* event)
{
    Visibility::styleUpon(event, this, &panelStyle);
    return QWidget::event(event);
}

void BaseSlobsPropertyView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange) {
        retranslateUi();
        showPane();
    }
    QWidget::changeEvent(event);
}
