#include "devhost/gallery/KitGallery.h"

#include "devhost/gallery/GalleryPose.h"
#include "devhost/gallery/GallerySheet.h"
#include "relay/ZoLumenProxy.h"
#include "uikit/BaseKnobIconWidget.h"
#include "uikit/BaseKnobPropertyWidget.h"
#include "uikit/BasePropertyWidget.h"
#include "uikit/DialogIconBuilder.h"
#include "uikit/DialogIconEditMenu.h"
#include "uikit/MekTooltipButton.h"
#include "uikit/SelectColorWidget.h"
#include "uikit/ZoBaseHotkeyWidget.h"
#include "uikit/ZoDisplayViewAttribute.h"
#include "uikit/ZoDisplayViewTextSetting.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;
using namespace GalleryPose;

namespace {

QString const kAnimation = u":/Streamlabs/images/slobs_source_on.gif"_s;
QString const kStill = u":/Streamlabs/images/slobs_scene_off.png"_s;
// Nothing is to the right of it.
constexpr int kFrameWidth = 616;
constexpr int kKnobWidth = 648;
constexpr QColor kOrange{255, 125, 0};

ZoDisplayViewAttribute look(int size, Qt::Alignment alignment, QColor const& color, bool styled)
{
    ZoDisplayViewAttribute attribute;
    attribute.family = QGuiApplication::font().family();
    attribute.size = size;
    attribute.horAlignment = static_cast<qint32>(alignment.toInt());
    attribute.color = color;
    attribute.bold = attribute.italic = attribute.underLine = styled;
    return attribute;
}

std::unique_ptr<BasePropertyWidget> frame(int states)
{
    auto made = std::make_unique<BasePropertyWidget>();
    QStringList const titles{u"First"_s, u"Second"_s, u"Third"_s, u"Fourth"_s, u"Fifth"_s, u"Sixth"_s};
    made->generateButtonsByStateNames(titles.first(states), true);
    made->setPluginIconList(QStringList(states, kStill));
    made->setPluginTitleList(titles.first(states));
    return made;
}

void addFrames(GallerySheet& sheet)
{
    sheet.beginGroup(u"frame"_s, u"Frame of a settings panel"_s);
    auto const editable = frame(2);
    editable->setTextEditable(true);
    sheet.add(u"824 px wide; two states, everything can be edited"_s, *editable);
    auto const pages = frame(6);
    pages->setTextEditable(true);
    pages->setCurrentId(3);
    focus(part(*pages, u"lineEdtPluginTitle"_s));
    hover(part(*pages, u"btnTextEdit"_s));
    press(part<QPushButton>(*pages, u"btnSelect"_s));
    sheet.add(u"Six states, buttons pointed at and pressed, typing"_s, *pages, kFrameWidth);
    auto const readOnly = frame(2);
    readOnly->setTitleIsReadOnly(true);
    readOnly->setIconChangeable(false);
    readOnly->hideButtons();
    sheet.add(u"Action mode: nothing can be edited"_s, *readOnly, kFrameWidth);
    auto const fixed = frame(1);
    fixed->setIconType(BaseIconProperty::Fixed, true);
    sheet.add(u"Fixed icon, resized"_s, *fixed, kFrameWidth);
    auto const missing = frame(1);
    missing->setPluginMissingMode();
    sheet.add(u"Action missing"_s, *missing, kFrameWidth);
    auto const styled = frame(2);
    styled->setPluginIconList({kAnimation, kAnimation});
    styled->setTextEditable(true);
    for (auto const* name : {"btnTextEdit", "btnSelect"}) {
        part(*styled, QString::fromLatin1(name)).setEnabled(false);
    }
    styled->adjustTextLabel(look(18, Qt::AlignRight, kOrange, true));
    styled->setPluginTitleList({u"A title that is too long for a key"_s, {}});
    sheet.add(u"Animation, long styled title, buttons disabled"_s, *styled, kFrameWidth);
}

void addTextSetting(GallerySheet& sheet)
{
    sheet.beginGroup(u"menus"_s, u"Text look, colours, icon source, tooltip"_s);
    ZoDisplayViewTextSetting plain;
    plain.setViewAttribute(look(13, Qt::AlignCenter, Qt::white, false));
    sheet.add(u"Text look, as it opens"_s, plain);
    ZoDisplayViewTextSetting set;
    set.setViewAttribute(look(18, Qt::AlignRight, kOrange, true));
    focus(part(set, u"btnAlignCenter"_s));
    hover(part(set, u"btnAlignLeft"_s));
    sheet.add(u"All set, one pointed at, one with the focus"_s, set);
    auto& sizes = part<QComboBox>(set, u"comboBoxFontSize"_s);
    focus(sizes);
    sizes.showPopup();
    sheet.add(u"Open list"_s, *sizes.view()->window());
    sizes.hidePopup();

    SelectColorWidget palette;
    palette.selectTargetColor(QColor(0, 125, 255));
    sheet.add(u"Colours"_s, palette);
    focus(part(palette, u"btnColor_08"_s));
    hover(part(palette, u"btnColor_02"_s));
    sheet.add(u"… one pointed at, one with the focus"_s, palette);

    DialogIconEditMenu menu;
    sheet.add(u"Icon source"_s, menu);
    hover(part(menu, u"btnIconBuilder"_s));
    sheet.add(u"… pointed at"_s, menu);
    menu.offerReset();
    sheet.add(u"… with another icon than the action's own"_s, menu);

    MekTooltipButton button;
    button.setText(u"Tooltip button"_s);
    button.adjustSize();
    sheet.add(u"Tooltip button (the host's look)"_s, button);
    auto const panel = frame(1);
    QWidget& select = part(*panel, u"btnSelect"_s);
    sheet.add(u"Tooltip"_s, tooltip(select, select.toolTip()));
}

void addBuilder(GallerySheet& sheet)
{
    sheet.beginGroup(u"icon-builder"_s, u"Icon builder"_s);
    QTemporaryDir const folder;
    ZoLumenProxy::getInstance().configDir = folder.path();
    QString const photo = folder.filePath(u"photo.png"_s);
    constexpr QSize kPhotoSize(90, 60);
    QImage image(kPhotoSize, QImage::Format_ARGB32);
    QLinearGradient sky(0, 0, 0, kPhotoSize.height());
    sky.setColorAt(0, QColor(60, 110, 190));
    sky.setColorAt(1, QColor(240, 160, 90));
    QPainter(&image).fillRect(image.rect(), sky);
    QPainter(&image).fillRect(0, 42, 90, 18, QColor(40, 60, 50));
    image.save(photo);

    DialogIconBuilder builder;
    sheet.add(u"No picture"_s, builder);
    builder.setImagePath(photo);
    auto& modes = part<QComboBox>(builder, u"cbBuilderList"_s);
    for (int mode = 0; mode < modes.count(); ++mode) {
        modes.setCurrentIndex(mode);
        sheet.add(modes.currentText(), builder);
    }
    sheet.beginGroup(u"icon-builder-use"_s, u"Icon builder in use"_s);
    focus(modes);
    hover(part(builder, u"btnOk"_s));
    sheet.add(u"OK pointed at, the list with the focus"_s, builder);
    modes.showPopup();
    sheet.add(u"Open list"_s, *modes.view()->window());
    modes.hidePopup();
    ZoLumenProxy::getInstance().configDir.clear();
    builder.setImagePath(photo);
    sheet.add(u"The icon folder cannot be written to"_s, builder);
    DialogIconBuilder animated;
    animated.setImagePath(kAnimation);
    part<QProgressBar>(animated, u"progressBar"_s).setValue(40);
    part(animated, u"progressBar"_s).show();
    for (auto const* name : {"btnOk", "btnOpenFile"}) {
        part(animated, QString::fromLatin1(name)).setEnabled(false);
    }
    sheet.add(u"An animation is being converted"_s, animated);
}

void addKeyFaces(GallerySheet& sheet)
{
    sheet.beginGroup(u"face"_s, u"Key face"_s);
    using Face = ZoBaseHotkeyWidget;
    auto const add = [&](QString const& caption, std::function<void(Face&)> const& prepare) {
        Face face;
        face.setIconTitle(u"Title"_s);
        face.setIconAsset(kStill);
        prepare(face);
        sheet.add(caption, face);
    };
    add(u"Still"_s, [](Face&) {});
    add(u"Animation"_s, [](Face& face) { face.setIconAsset(kAnimation); });
    add(u"Pressed"_s, [](Face& face) { face.keyDown(); });
    add(u"Invalid"_s, [](Face& face) { face.showInvalid(); });
    add(u"Inactive"_s, [](Face& face) { face.showInactive(); });
    add(u"No title"_s, [](Face& face) { face.hideText(); });
    add(u"Styled"_s, [](Face& face) { face.adjustView(look(18, Qt::AlignRight, kOrange, true)); });
    add(u"Small picture"_s, [](Face& face) { face.setIconAsset(u":/images/component_btn_photo_n.svg"_s); });
    add(u"Square picture"_s, [](Face& face) { face.setIconAsset(u":/images/Zq900_Appicon_128.png"_s); });
    add(u"Long title"_s, [](Face& face) { face.setIconTitle(u"A title that is too long"_s); });
    add(u"Japanese"_s, [](Face& face) { face.setIconTitle(u"シーン切替"_s); });
}

void addKnobs(GallerySheet& sheet)
{
    sheet.beginGroup(u"knobs"_s, u"Knobs"_s);
    for (int const value : {0, 25, 50, 100}) {
        BaseKnobIconWidget knob;
        knob.setKnobValue(value);
        knob.setTitle(u"Volume"_s);
        sheet.add(u"Value %1"_s.arg(value), knob);
    }
    BaseKnobIconWidget knob;
    knob.setKnobMinimum(-60);
    knob.setKnobMaximum(0);
    knob.setKnobValue(-18);
    knob.setKnobColor(QColor(0, 125, 255));
    knob.hideTitle();
    sheet.add(u"-60 to 0, no title"_s, knob);
    knob.setKnobIcon(u":/Streamlabs/images/mainpage_btn_slobs_mixer_on.png"_s);
    knob.showIcon();
    sheet.add(u"Icon"_s, knob);
    knob.showTitle();
    knob.setTitle(u"Microphone"_s);
    knob.showDisable();
    sheet.add(u"Disabled"_s, knob);

    BaseKnobPropertyWidget panel;
    panel.generateButtonsByStateNames({u"Volume"_s, u"Muted"_s});
    panel.setKnobIconList({u":/Streamlabs/images/mainpage_btn_slobs_mixer_on.png"_s, {}});
    panel.setKnobTitleList({u"Volume"_s, u"Muted"_s});
    panel.setCurrentId(0);
    panel.setKnobColor(kOrange);
    panel.showKnobColor();
    part(panel, u"btnSetting"_s).show();
    sheet.add(u"Settings of a knob"_s, panel, kKnobWidth);
    panel.setCurrentId(1);
    panel.hideColorSelect();
    panel.showKnobColorTransparent();
    hover(part(panel, u"btnSetting"_s));
    sheet.add(u"… second page, without colours"_s, panel, kKnobWidth);
}

} // namespace

void KitGallery::addTo(GallerySheet& sheet)
{
    addKeyFaces(sheet);
    addFrames(sheet);
    addTextSetting(sheet);
    addBuilder(sheet);
    addKnobs(sheet);
}
