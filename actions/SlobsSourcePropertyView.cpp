#include "actions/SlobsSourcePropertyView.h"

#include "actions/SlobsPanelMessages.h"
#include "actions/SlobsSettingsKeys.h"
#include "streamlabs/SlobsMessages.h"
#include "ui_SlobsSourcePropertyView.h"

#include <QDebug>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace SlobsSettingsKeys;
using StreamlabsApiPrivate::Scene;
using StreamlabsApiPrivate::Source;

SlobsSourcePropertyView::SlobsSourcePropertyView(QWidget* parent)
    : BaseSlobsPropertyView(parent), ui(std::make_unique<Ui::SlobsSourcePropertyView>())
{
    ui->setupUi(this);
    init(ui->base);
    registerLoginPane(ui->btnGoAuth, ui->txtWarningMessage);
    registerChoiceHint(ui->txtChoiceHint);
    connect(ui->dropdownSceneList, &QComboBox::activated, this, &SlobsSourcePropertyView::onSceneChosen);
    connect(
        ui->dropdownSceneItemList, &QComboBox::activated, this, &SlobsSourcePropertyView::onSceneItemChosen);
    connect(ui->btnRefresh, &QPushButton::clicked, this,
        [this] { emit sendToWidget(SlobsPanelMessages::toTask(SlobsPanelMessages::kRefreshScene)); });
}

SlobsSourcePropertyView::~SlobsSourcePropertyView() = default;

void SlobsSourcePropertyView::onWidgetMessageReceived(QJsonObject const& message)
{
    QString const task = SlobsMessages::nameOf(message);
    if (task == SlobsAgentPrivate::kQueryScenesResult) {
        QString activeId;
        SlobsMessages::fromSceneList(message, scenes, activeId);
    } else if (task == SlobsAgentPrivate::kCcGetWidgetSettings) {
        QJsonObject const payload = SlobsPanelMessages::settingsOf(message);
        scene = SlobsTarget::fromJson(payload, kSceneId, kSceneName);
        item = SlobsTarget::fromJson(payload, kSceneItemId, kSceneItemName);
    } else {
        return;
    }
    refreshLists();
}

void SlobsSourcePropertyView::refreshLists()
{
    auto const choices = toChoices(scenes, &Scene::id);
    scene.name = nameOf(choices, scene.id, scene.name);
    Selection const ofScene = fillChoices(ui->dropdownSceneList, choices, {scene.id, scene.name});
    Selection const ofItem = refreshSceneItemList();
    showSelection(std::max(ofScene, ofItem));
}

BaseSlobsPropertyView::Selection SlobsSourcePropertyView::refreshSceneItemList()
{
    auto const shown =
        std::ranges::find(std::as_const(scenes), ui->dropdownSceneList->currentData().toString(), &Scene::id);
    if (shown == scenes.cend()) {
        qDebug() << "unable to refresh scene item list";
        return fillChoices(ui->dropdownSceneItemList, {}, {item.id, item.name});
    }
    auto const choices = toChoices(shown->nodes, &Source::sceneItemId);
    item.name = nameOf(choices, item.id, item.name);
    return fillChoices(ui->dropdownSceneItemList, choices, {item.id, item.name});
}

// A scene is chosen together with the item that then shows: what the boxes say is what the key does.
void SlobsSourcePropertyView::onSceneChosen()
{
    SlobsTarget const chosen{
        ui->dropdownSceneList->currentData().toString(), ui->dropdownSceneList->currentText()};
    if (chosen.id != scene.id) {
        item = {};
    }
    scene = chosen;
    refreshSceneItemList();
    onSceneItemChosen();
}

void SlobsSourcePropertyView::onSceneItemChosen()
{
    scene = {ui->dropdownSceneList->currentData().toString(), ui->dropdownSceneList->currentText()};
    if (ui->dropdownSceneItemList->count() > 0) {
        item = {
            ui->dropdownSceneItemList->currentData().toString(), ui->dropdownSceneItemList->currentText()};
    }
    QJsonObject payload;
    scene.writeTo(payload, kSceneId, kSceneName);
    item.writeTo(payload, kSceneItemId, kSceneItemName);
    refreshLists();
    emit sendToWidget(SlobsPanelMessages::toSetSettings(payload));
}

void SlobsSourcePropertyView::retranslateUi()
{
    ui->retranslateUi(this);
}
