#include "actions/SlobsScenePropertyView.h"

#include "actions/SlobsPanelMessages.h"
#include "actions/SlobsSettingsKeys.h"
#include "streamlabs/SlobsMessages.h"
#include "ui_SlobsScenePropertyView.h"

using namespace Qt::StringLiterals;
using namespace SlobsSettingsKeys;

SlobsScenePropertyView::SlobsScenePropertyView(QWidget* parent)
    : BaseSlobsPropertyView(parent), ui(std::make_unique<Ui::SlobsScenePropertyView>())
{
    ui->setupUi(this);
    init(ui->base);
    registerLoginPane(ui->btnGoAuth, ui->txtWarningMessage);
    registerChoiceHint(ui->txtChoiceHint);
    connect(ui->dropdownSceneList, &QComboBox::activated, this, &SlobsScenePropertyView::onSceneChosen);
    connect(ui->btnRefresh, &QPushButton::clicked, this,
        [this] { emit sendToWidget(SlobsPanelMessages::toTask(SlobsPanelMessages::kRefreshScene)); });
}

SlobsScenePropertyView::~SlobsScenePropertyView() = default;

void SlobsScenePropertyView::onWidgetMessageReceived(QJsonObject const& message)
{
    QString const task = SlobsMessages::nameOf(message);
    if (task == SlobsAgentPrivate::kQueryScenesResult) {
        QList<StreamlabsApiPrivate::Scene> list;
        QString activeId;
        SlobsMessages::fromSceneList(message, list, activeId);
        scenes = toChoices(list, &StreamlabsApiPrivate::Scene::id);
        scene.name = nameOf(scenes, scene.id, scene.name);
    } else if (task == SlobsAgentPrivate::kCcGetWidgetSettings) {
        scene = SlobsTarget::fromJson(SlobsPanelMessages::settingsOf(message), kSceneId, kSceneName);
    } else {
        return;
    }
    refreshSceneList();
}

void SlobsScenePropertyView::refreshSceneList()
{
    showSelection(fillChoices(ui->dropdownSceneList, scenes, {scene.id, scene.name}));
}

void SlobsScenePropertyView::retranslateUi()
{
    ui->retranslateUi(this);
}

void SlobsScenePropertyView::onSceneChosen()
{
    scene = {ui->dropdownSceneList->currentData().toString(), ui->dropdownSceneList->currentText()};
    QJsonObject payload;
    scene.writeTo(payload, kSceneId, kSceneName);
    refreshSceneList();
    emit sendToWidget(SlobsPanelMessages::toSetSettings(payload));
}
