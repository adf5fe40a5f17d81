#include "actions/SlobsScenePropertyView.h"

#include "actions/SlobsAgent.h"
#include "ui_SlobsScenePropertyView.h"

using namespace Qt::StringLiterals;
using namespace SlobsSettingsKeys;

SlobsScenePropertyView::SlobsScenePropertyView(QWidget* parent)
    : BaseSlobsPropertyView(parent), ui(std::make_unique<Ui::SlobsScenePropertyView>())
{
    ui->setupUi(this);
    init(ui->base);
    registerLoginPane(ui->btnGoAuth, ui->txtWarningMessage);
    connect(ui->dropdownSceneList, &QComboBox::activated, this, &SlobsScenePropertyView::onSceneChosen);
    connect(ui->btnRefresh, &QPushButton::clicked, this,
        [this] { emit sendToWidget({{u"task"_s, SlobsPanelTasks::kRefreshScene}}); });
}

SlobsScenePropertyView::~SlobsScenePropertyView() = default;

void SlobsScenePropertyView::onWidgetMessageReceived(QJsonObject const& message)
{
    QString const task = message.value("task"_L1).toString();
    if (task == SlobsAgentPrivate::kQueryScenesResult) {
        QList<StreamlabsApiPrivate::Scene> list;
        QString activeId;
        SlobsAgent::fromSceneList(message, list, activeId);
        scenes = toChoices(list, &StreamlabsApiPrivate::Scene::id);
        scene.name = nameOf(scenes, scene.id, scene.name);
    } else if (task == SlobsAgentPrivate::kCcGetWidgetSettings) {
        scene = SlobsTarget::fromJson(message.value("payload"_L1).toObject(), kSceneId, kSceneName);
    } else {
        return;
    }
    refreshSceneList();
}

void SlobsScenePropertyView::refreshSceneList()
{
    bool const found = fillChoices(ui->dropdownSceneList, scenes, {scene.id, scene.name});
    showInvalidSelection(!found);
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
    emit sendToWidget({{u"task"_s, SlobsAgentPrivate::kCcSetWidgetSettings}, {u"payload"_s, payload}});
}
