#include "actions/SlobsAudioPropertyView.h"

#include "actions/SlobsPanelMessages.h"
#include "actions/SlobsSettingsKeys.h"
#include "streamlabs/SlobsMessages.h"
#include "ui_SlobsAudioPropertyView.h"

#include <QDebug>

using namespace Qt::StringLiterals;
using namespace SlobsSettingsKeys;
using StreamlabsApiPrivate::AudioSource;

SlobsAudioPropertyView::SlobsAudioPropertyView(QWidget* parent)
    : BaseSlobsPropertyView(parent), ui(std::make_unique<Ui::SlobsAudioPropertyView>())
{
    ui->setupUi(this);
    init(ui->base);
    registerLoginPane(ui->btnGoAuth, ui->txtWarningMessage);
    registerChoiceHint(ui->txtChoiceHint);
    connect(ui->dropdownAudioList, &QComboBox::activated, this, &SlobsAudioPropertyView::onAudioSourceChosen);
}

SlobsAudioPropertyView::~SlobsAudioPropertyView() = default;

void SlobsAudioPropertyView::onWidgetMessageReceived(QJsonObject const& message)
{
    QString const task = SlobsMessages::nameOf(message);
    if (task == SlobsAgentPrivate::kQueryAudioListResult) {
        QList<AudioSource> list;
        SlobsMessages::fromAudioList(message, list);
        sources = toChoices(list, &AudioSource::sourceId);
        source.name = nameOf(sources, source.id, source.name);
    } else if (task == SlobsAgentPrivate::kCcGetWidgetSettings) {
        source =
            SlobsTarget::fromJson(SlobsPanelMessages::settingsOf(message), kAudioSourceId, kAudioSourceName);
    } else {
        return;
    }
    refreshAudioList();
}

void SlobsAudioPropertyView::refreshAudioList()
{
    Selection const ofSource = fillChoices(ui->dropdownAudioList, sources, {source.id, source.name});
    if (ofSource == Selection::Missing) {
        qDebug() << "FIXME: No audio source found in the list";
    }
    showSelection(ofSource);
}

void SlobsAudioPropertyView::onAudioSourceChosen()
{
    source = {ui->dropdownAudioList->currentData().toString(), ui->dropdownAudioList->currentText()};
    QJsonObject payload;
    source.writeTo(payload, kAudioSourceId, kAudioSourceName);
    refreshAudioList();
    emit sendToWidget(SlobsPanelMessages::toSetSettings(payload));
}

void SlobsAudioPropertyView::retranslateUi()
{
    ui->retranslateUi(this);
}
