#pragma once

#include "actions/BaseSlobsPropertyView.h"
#include "actions/SlobsTarget.h"

#include <memory>

namespace Ui {
class SlobsAudioPropertyView;
}

//! The settings panel of an audio source: which one of the current scene collection's.
class SlobsAudioPropertyView : public BaseSlobsPropertyView
{
    Q_OBJECT

public:
    explicit SlobsAudioPropertyView(QWidget* parent = nullptr);
    ~SlobsAudioPropertyView() override;

public slots:
    void onWidgetMessageReceived(QJsonObject const& message) override;

protected:
    void retranslateUi() override;

private:
    void refreshAudioList();
    void onAudioSourceChosen();

    std::unique_ptr<Ui::SlobsAudioPropertyView> ui;
    QList<Choice> sources;
    SlobsTarget source;
};
