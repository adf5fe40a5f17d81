#include "actions/BaseSlobsDisplayView.h"

#include "ui_SlobsDisplayView.h"
#include "uikit/ZoBaseHotkeyWidget.h"

BaseSlobsDisplayView::BaseSlobsDisplayView(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::SlobsDisplayView>())
{
    ui->setupUi(this);
    init(ui->base);
}

BaseSlobsDisplayView::~BaseSlobsDisplayView() = default;

void BaseSlobsDisplayView::init(ZoBaseHotkeyWidget* hotkey)
{
    face = hotkey;
}

void BaseSlobsDisplayView::setupWidgetStates(QList<QString> const& titles, QList<QString> const& icons)
{
    titleList = titles;
    iconList = icons;
}

void BaseSlobsDisplayView::setWidgetState(int state)
{
    currentState = state;
    if (state >= 0 && state < titleList.size()) {
        setIconTitle(titleList.at(state));
    }
    if (state >= 0 && state < iconList.size()) {
        setIconAsset(iconList.at(state));
    }
}

void BaseSlobsDisplayView::keyDown()
{
    if (face) {
        face->keyDown();
    }
}

void BaseSlobsDisplayView::keyUp()
{
    if (face) {
        face->keyUp();
    }
}

void BaseSlobsDisplayView::setDownImage(QPixmap const& pixmap)
{
    if (face) {
        face->setDownImage(pixmap);
    }
}

QPixmap BaseSlobsDisplayView::grabWithoutTitle()
{
    if (!face) {
        return {};
    }
    face->setIconTitle({});
    QPixmap picture = face->grab();
    face->setIconTitle(titleList.value(currentState));
    return picture;
}

void BaseSlobsDisplayView::showInvalid()
{
    if (face) {
        face->showInvalid();
    }
}

void BaseSlobsDisplayView::hideInvalid()
{
    if (face) {
        face->hideInvalid();
    }
}

void BaseSlobsDisplayView::adjustView(ZoDisplayViewAttribute const& attribute)
{
    if (face) {
        face->adjustView(attribute);
    }
}

void BaseSlobsDisplayView::setIconTitle(QString const& title)
{
    if (face) {
        face->setIconTitle(title);
    }
}

void BaseSlobsDisplayView::setIconAsset(QString const& path)
{
    if (face) {
        face->setIconAsset(path);
    }
}

void BaseSlobsDisplayView::onStreamlabsStateChanged(bool isAuthorized, QString const& newToken, int newPort)
{
    link = {isAuthorized, newToken, newPort};
    refreshUiState();
}

void BaseSlobsDisplayView::showState(int state, bool valid)
{
    if (state != currentState) {
        setWidgetState(state);
    }
    if (valid) {
        hideInvalid();
    } else {
        showInvalid();
    }
}
