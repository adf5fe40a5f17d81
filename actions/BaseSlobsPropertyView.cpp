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
    Visibility::styleUpon(event, this, u"BaseSlobsPropertyView"_s);
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
