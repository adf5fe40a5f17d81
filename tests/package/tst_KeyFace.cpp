#include "tests/TestFolder.h"
#include "tests/TestGif.h"
#include "uikit/BaseKnob.h"
#include "uikit/BaseKnobIconWidget.h"
#include "uikit/BaseKnobPropertyWidget.h"
#include "uikit/BaseKnobStateWidget.h"
#include "uikit/MekMixerHelper.h"
#include "uikit/MekTooltipButton.h"
#include "uikit/MekTooltipEvent.h"
#include "uikit/ZoBaseHotkeyWidget.h"
#include "uikit/ZoDisplayViewAttribute.h"

#include <QButtonGroup>
#include <QLabel>
#include <QLineEdit>
#include <QMovie>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;
using Names = QList<QString>;

namespace {

constexpr QSize kFace{150, 108};
constexpr QRect kWhole{{0, 0}, kFace};
QColor const kGray(30, 30, 30);

template <typename T = QLabel>
T* child(QWidget const* widget, char const* name)
{
    return widget->findChild<T*>(QString::fromLatin1(name));
}

} // namespace

class tst_KeyFace : public QObject
{
    Q_OBJECT

private:
    TestFolder folder;
    int paints = 0;
    Names reports;

    //! Sees what a widget or the application gets.
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint ? 1 : 0;
        if (event->type() == QEvent::Type(3417)) {
            auto const& report = static_cast<MekTooltipEvent const&>(*event);
            reports += report.eventName() + u'/' + report.label();
        }
        return false;
    }

    int paintEvents(QWidget& widget, std::function<void()> const& work)
    {
        QCoreApplication::processEvents();
        paints = 0;
        widget.installEventFilter(this);
        work();
        QCoreApplication::processEvents();
        widget.removeEventFilter(this);
        return paints;
    }

    static QColor pixel(QWidget* widget, QPoint at)
    {
        QImage const image = widget->grab().toImage();
        return image.pixelColor((QPointF(at) * image.devicePixelRatio()).toPoint());
    }

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s)); }

    void forms()
    {
        auto const check = [](QWidget& form, QHash<QString, QRect> const& rects, Names const& hidden) {
            for (auto const& [name, rect] : rects.asKeyValueRange()) {
                auto const* const part = name.isEmpty() ? &form : form.findChild<QWidget*>(name);
                QCOMPARE(QRect(part->mapTo(&form, QPoint(0, 0)), part->size()), rect);
            }
            for (auto const* part : form.findChildren<QWidget*>()) {
                QCOMPARE(part->isHidden(), hidden.contains(part->objectName()));
            }
        };
        // As a host embeds them: its own look must not reach into the parts.
        QWidget host;
        host.setStyleSheet(u"background-color: red; border: 5px solid blue;"_s);
        auto* const face = new ZoBaseHotkeyWidget(&host);
        check(*face,
            {{{}, kWhole}, {u"lblIcon"_s, kWhole}, {u"lblTitle"_s, {0, 72, 150, 30}},
                {u"lblMaskClick"_s, kWhole}, {u"lblMaskInvalid"_s, kWhole}, {u"lblMaskInactive"_s, kWhole}},
            {u"lblMaskClick"_s, u"lblMaskInvalid"_s, u"lblMaskInactive"_s});
        face->setIconTitle({});
        QCOMPARE(pixel(face, {75, 1}), QColor(Qt::black));
        QCOMPARE(pixel(face, {75, 2}), kGray);
        QRect const dial(0, 0, 108, 108);
        BaseKnobIconWidget knob;
        check(knob, {{{}, dial}, {u"base"_s, dial}, {u"lblMaskDisable"_s, dial}, {u"lblSkin"_s, dial}},
            {u"lblMaskDisable"_s, u"lblIcon"_s});
        BaseKnobPropertyWidget panel;
        check(panel,
            {{{}, {0, 0, 824, 234}}, {u"knobStateWidget"_s, {0, 0, 240, 234}},
                {u"lineEdtPluginTitle"_s, {256, 32, 344, 24}}, {u"lblPluginTitle"_s, {256, 8, 344, 24}}},
            {u"btnSetting"_s});
    }

    // How a picture is cut or placed is told by the icon builder's test.
    void fitting()
    {
        for (auto const& [size, drawn] :
            {std::pair(kFace, kWhole), {{40, 40}, {55, 34, 40, 40}}, {{2, 2}, {74, 53, 2, 2}},
                {{225, 162}, kWhole}, {{300, 50}, kWhole}, {{100, 200}, kWhole}, {{60000, 1}, kWhole}}) {
            QImage image(size, QImage::Format_RGB32);
            image.fill(Qt::red);
            for (int const ratio : {1, 2}) {
                QImage const face = MekMixerHelper::getProcessPluginIcon(image, kFace, ratio);
                QCOMPARE(face.deviceIndependentSize(), QSizeF(kFace));
                QCOMPARE(face.pixelColor(drawn.topLeft() * ratio), QColor(Qt::red));
                QVERIFY(drawn == kWhole || face.pixel((drawn.topLeft() - QPoint(1, 1)) * ratio) == 0);
            }
        }
        QCOMPARE(ZoBaseHotkeyWidget::processHotkeyIcon({}, {4, 5}).pixel(3, 4), 0U);
        QVERIFY(ZoBaseHotkeyWidget::processHotkeyIcon(QImage(1, 1, QImage::Format_RGB32), {}).isNull());
    }

    void icons_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QSize>("playing"); // at this size; the face's for a still picture
        QTest::addColumn<QColor>("middle"); // gray: the face is empty
        QByteArray const svg("<svg xmlns='http://www.w3.org/2000/svg' width='%' height='%'>"
                             "<rect width='99999' height='99999' fill='red'/></svg>");
        auto const row = [](char const* name, QString const& path, QSize size = {0, 0},
                             QColor const& middle = kGray) { QTest::newRow(name) << path << size << middle; };
        row("png", folder.picture(u"a.png"_s, kFace, Qt::red), kFace, Qt::red);
        row("svg", folder.file(u"c.svg"_s, QByteArray(svg).replace('%', "150")), kFace, Qt::red);
        row("gif by its content", folder.file(u"d.png"_s, TestGif::flat(kFace, 2)), kFace, Qt::black);
        row("wide gif", folder.file(u"e.GIF"_s, TestGif::flat({100, 50}, 2)), {150, 75}, Qt::black);
        row("png named gif", folder.picture(u"g.gif"_s, kFace, Qt::red, "png"), kFace, Qt::red);
        row("no path", QString());
        row("missing", u"/nowhere/a.png"_s);
        row("missing gif", u"/nowhere/a.gif"_s);
        row("a folder", folder.path());
        row("gigantic gif", folder.file(u"j.gif"_s, TestGif::flat({60000, 60000}, 2, {0, 0, 60000, 1})));
        row("gigantic svg", folder.file(u"l.svg"_s, QByteArray(svg).replace('%', "60000")));
    }

    void icons()
    {
        QFETCH(QString, path);
        QFETCH(QSize, playing);
        QFETCH(QColor, middle);
        bool const isShown = middle != kGray;
        bool const moves = isShown && path.endsWith(u".gif"_s, Qt::CaseInsensitive);
        for (QString const& first : {folder.picture(u"first.png"_s, kFace, Qt::green),
                 folder.file(u"first.gif"_s, TestGif::flat(kFace, 2))}) {
            ZoBaseHotkeyWidget face;
            face.setIconTitle({});
            auto* const label = child(&face, "lblIcon");
            face.setIconAsset(first);
            QPointer<QMovie> const before = label->movie();
            if (!isShown) {
                QTest::ignoreMessage(
                    QtWarningMsg, QRegularExpression(u"\\[(play|read|sharp)\\] .*\"%1\""_s.arg(path)));
            }
            face.setIconAsset(path);
            QVERIFY(!before);
            QCOMPARE(pixel(&face, {75, 54}), middle);
            QCOMPARE(moves ? label->movie()->scaledSize() : label->pixmap().size(),
                (QSizeF(playing) * face.devicePixelRatioF()).toSize());
            QCOMPARE(label->hasScaledContents(), !moves);
            QTRY_VERIFY(!moves || label->movie()->state() != QMovie::Running); // hidden
        }
    }

    void nothingNewIsNoWork()
    {
        ZoBaseHotkeyWidget face;
        auto* const label = child(&face, "lblIcon");
        QString const still = folder.picture(u"same.png"_s, kFace, Qt::red);
        face.show();
        QVERIFY(QTest::qWaitForWindowExposed(&face));
        ZoDisplayViewAttribute look;
        for (QString const& path : {still, folder.file(u"same.gif"_s, TestGif::flat(kFace, 1))}) {
            auto const set = [&] {
                face.setIconAsset(path);
                face.setIconTitle(u"Title"_s);
                face.adjustView(look);
            };
            set();
            QTRY_VERIFY(!label->movie() || label->movie()->state() == QMovie::Paused); // its one frame
            QCOMPARE(paintEvents(face, set), 0);
        }
        look.size = 18;
        QVERIFY(paintEvents(face, [&] { face.adjustView(look); }) > 0);
        QCOMPARE(child(&face, "lblTitle")->geometry(), QRect(0, 108 - 36 - 10, 150, 40));

        // New content under an old name.
        face.setIconTitle({});
        face.setIconAsset(still);
        folder.picture(u"same.png"_s, {200, 200}, Qt::yellow);
        face.setIconAsset(still);
        QCOMPARE(pixel(&face, {75, 54}), QColor(Qt::yellow));
        // A pixmap takes the file's place.
        QPixmap const plain(folder.picture(u"plain.png"_s, {10, 10}, Qt::cyan));
        face.setIconPixmap(plain);
        QCOMPARE(pixel(&face, {2, 2}), QColor(Qt::cyan));
        QCOMPARE(paintEvents(face, [&] { face.setIconPixmap(plain); }), 0);
        face.setIconAsset(still);
        QCOMPARE(pixel(&face, {75, 54}), QColor(Qt::yellow));
    }

    //! Narrower first, then with an end that shows that something is missing, at whichever side it begins.
    void longTitles()
    {
        ZoBaseHotkeyWidget face;
        face.show();
        auto const drawn = [&](QString const& title) {
            face.setIconTitle(title);
            return child(&face, "lblTitle")->grab().toImage();
        };
        for (auto const side : {Qt::AlignLeft, Qt::AlignHCenter, Qt::AlignRight}) {
            ZoDisplayViewAttribute look;
            look.horAlignment = side;
            face.adjustView(look);
            QString const shrunk = u"Main scene"_s;
            QVERIFY(drawn(shrunk + u'x') != drawn(shrunk + u'y'));
            QString const cut = u"Scene and much more than fits"_s;
            QVERIFY(drawn(cut + u'x') == drawn(cut + u'y'));
            QVERIFY(drawn(u'x' + cut) != drawn(u'y' + cut));
            face.setIconTitle(cut);
            QCOMPARE(child(&face, "lblTitle")->text(), cut);
        }
    }

    void masks()
    {
        ZoBaseHotkeyWidget face;
        using Face = ZoBaseHotkeyWidget;
        for (auto const& [on, off] :
            {std::pair(&Face::keyDown, &Face::keyUp), {&Face::showInvalid, &Face::hideInvalid},
                {&Face::showInactive, &Face::hideInactive}, {&Face::showText, &Face::hideText}}) {
            (face.*off)();
            QImage const without = face.grab().toImage();
            (face.*on)();
            QVERIFY(face.grab().toImage() != without);
            (face.*off)();
            QVERIFY(face.grab().toImage() == without);
        }
    }

    void animations()
    {
        ZoBaseHotkeyWidget face;
        face.show();
        QVERIFY(QTest::qWaitForWindowExposed(&face));
        auto* const label = child(&face, "lblIcon");
        // One without a word about rounds plays once and, however often it is painted, no more.
        face.setIconAsset(folder.file(u"once.gif"_s, TestGif::gif({{}, {}}, std::nullopt)));
        QTRY_COMPARE(label->movie()->state(), QMovie::NotRunning);
        face.grab();
        QCOMPARE(label->movie()->state(), QMovie::NotRunning);

        // One out of the resources rests while the key shows something else, and goes on.
        QString const live = u":/Streamlabs/images/slobs_stream_on.gif"_s;
        face.setIconAsset(live);
        QPointer<QMovie> const movie = label->movie();
        QTRY_VERIFY(movie->currentFrameNumber() > 0);
        face.setIconAsset(folder.picture(u"still.png"_s, kFace, Qt::red));
        QVERIFY(movie && !label->movie() && movie->state() == QMovie::Paused);
        face.setIconAsset(live);
        QCOMPARE(label->movie(), movie.get());
        int const resumed = movie->currentFrameNumber();
        QTRY_VERIFY(movie->currentFrameNumber() != resumed);
    }

    void pressing()
    {
        ZoBaseHotkeyWidget face;
        face.setIconTitle({});
        auto* const label = child(&face, "lblIcon");
        QString const gif = folder.file(u"pressed.gif"_s, TestGif::flat(kFace, 1));
        QPixmap const down(folder.picture(u"down.png"_s, {100, 72}, Qt::magenta));
        for (QString const& path : {folder.picture(u"released.png"_s, kFace, Qt::red), gif}) {
            face.setIconAsset(path);
            QImage const before = face.grab().toImage();
            face.setDownImage(QPixmap(3, 3));
            face.setDownImage(down);
            QVERIFY(!label->movie() && !label->hasScaledContents());
            QCOMPARE(pixel(&face, {75, 54}), QColor(Qt::magenta));
            QCOMPARE(pixel(&face, {20, 54}), kGray); // not stretched
            face.setIconAsset(path);
            for (int i = 0; i < 2; ++i) {
                face.keyUp();
                QVERIFY(face.grab().toImage() == before && (label->movie() != nullptr) == (path == gif));
            }
        }
        // The file disappears while the key is down.
        face.setDownImage(down);
        QVERIFY(QFile::remove(gif));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"AnimatedIcon..play"_s));
        face.keyUp();
        QCOMPARE(pixel(&face, {75, 54}), QColor(Qt::black));
        // A new icon shows at once and stays.
        face.setDownImage(down);
        face.setIconAsset(folder.picture(u"next.png"_s, kFace, Qt::yellow));
        QCOMPARE(pixel(&face, {75, 54}), QColor(Qt::yellow));
        face.keyUp();
        QCOMPARE(pixel(&face, {75, 54}), QColor(Qt::yellow));
    }

    void arcs()
    {
        int const most = 2147483647;
        // Where there is colour: at the lower left, left, top, right, lower right, bottom.
        for (auto const& [value, minimum, maximum, degrees, colored] :
            {std::tuple(50, 0, 100, 135, "xxx---"), {1, 0, 100, 2, "------"}, {-25, 0, 100, -67, "-----x"},
                {200, 0, 100, 540, "xxxxxx"}, {5, 3, 3, 0, "------"}, {25, 100, 0, 202, "xxx---"},
                {most, -most - 1, most, 270, "xxxxx-"}, {most, 0, 1, most, "xxxxxx"}}) {
            BaseKnobIconWidget face;
            face.setKnobMinimum(minimum);
            face.setKnobMaximum(maximum);
            face.setKnobValue(value);
            QCOMPARE(child<BaseKnob>(&face, "base")->getCurrentArcLength(), degrees);
            QCOMPARE(child(&face, "lblVolume")->text(), QString::number(value));
            child(&face, "lblSkin")->hide();
            child(&face, "lblVolume")->hide();
            for (QColor const& color : {QColor(224, 147, 55), QColor(1, 200, 3)}) {
                QString found;
                // Five degrees inside of the dial's ends, at the middle of the arc's width.
                for (QPoint at : {QPoint(-28, 23), {-36, 0}, {-3, -36}, {36, 0}, {28, 23}, {0, 36}}) {
                    found += pixel(&face, QPoint(54, 54) + at) == color ? u'x' : u'-';
                }
                QCOMPARE(found, QString::fromLatin1(colored));
                face.setKnobColor(QColor(1, 200, 3));
                face.setKnobColor(QColor());
            }
        }
    }

    void knobFace()
    {
        using Face = BaseKnobIconWidget;
        Face face;
        face.show();
        QVERIFY(QTest::qWaitForWindowExposed(&face));
        face.setKnobIcon(folder.picture(u"knob.png"_s, {99, 70}, Qt::red));
        face.showIcon();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"No such file"_s));
        face.setKnobIcon(u"/nowhere.png"_s);
        QVERIFY(!child(&face, "lblVolume")->isVisible() && pixel(&face, {54, 54}) == Qt::red);
        face.hideIcon();
        QVERIFY(child(&face, "lblVolume")->isVisible() && !child(&face, "lblIcon")->isVisible());
        face.setTitle(u"<b>x"_s);
        QCOMPARE(child(&face, "lblImageText")->textFormat(), Qt::PlainText);
        for (auto const& [name, on, off] : {std::tuple("lblImageText", &Face::showTitle, &Face::hideTitle),
                 {"lblMaskDisable", &Face::showDisable, &Face::hideDisable}}) {
            (face.*on)();
            QVERIFY(child(&face, name)->isVisible());
            (face.*off)();
            QVERIFY(!child(&face, name)->isVisible());
        }
        QCOMPARE(paintEvents(face, [&] { face.setKnobValue(0); }), 0);
        QVERIFY(paintEvents(face, [&] { face.setKnobMinimum(-1); }) > 0);
    }

    void knobColors()
    {
        BaseKnobPropertyWidget panel;
        QSignalSpy selected(&panel, &BaseKnobPropertyWidget::knobColorSelected);
        auto const shows = [&](QColor const& color) {
            QImage const preview =
                child(child<QWidget>(&panel, "widgetIcon"), "lblBackground")->pixmap().toImage();
            auto const at = [&](QPointF point) {
                return preview.pixelColor((point * preview.devicePixelRatio()).toPoint());
            };
            return preview.deviceIndependentSize() == QSizeF(110, 110) && at({18, 55}) == color &&
                   at({55, 18}) == color && at({55, 92}).alpha() == 0 && at({55, 55}).alpha() > 0;
        };
        panel.showKnobColor();
        QVERIFY(shows(Qt::transparent)); // none yet
        QColor const green(0, 255, 125);
        panel.setKnobColor(green);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"setKnobColor. Not a colour"_s));
        panel.setKnobColor({});
        auto const* const chosen = child<QPushButton>(&panel, "btnColor_04");
        QVERIFY(chosen->isChecked() && shows(green));
        panel.showKnobColorTransparent();
        QVERIFY(shows(Qt::transparent));
        panel.showKnobColor();
        QVERIFY(shows(green));
        QVERIFY(paintEvents(panel, [&] { panel.setKnobColor(green); }) == 0);
        panel.setKnobColor(QColor(1, 2, 3)); // not in the palette
        QVERIFY(chosen->isChecked() && shows(QColor(1, 2, 3)) && selected.isEmpty());
        QTest::mouseClick(child<QPushButton>(&panel, "btnColor_01"), Qt::LeftButton);
        QCOMPARE(selected, (QList<QVariantList>{{QColor(Qt::red)}}));
        QVERIFY(shows(Qt::red));
        auto const* const palette = child<QWidget>(&panel, "selectColorWidget");
        panel.hideColorSelect();
        QVERIFY(palette->isHidden());
        panel.showColorSelect();
        QVERIFY(!palette->isHidden());
    }

    void knobStates()
    {
        BaseKnobPropertyWidget panel;
        panel.show();
        QSignalSpy titled(&panel, &BaseKnobPropertyWidget::knobTitleChanged);
        QSignalSpy paged(&panel, &BaseKnobPropertyWidget::stateIndexChanged);
        QSignalSpy settings(&panel, &BaseKnobPropertyWidget::settingButtonClicked);
        auto* const edit = child<QLineEdit>(&panel, "lineEdtPluginTitle");
        auto const icon = [&] { return pixel(child(&panel, "lblIcon"), {18, 18}); };
        Names const icons{
            folder.picture(u"0.png"_s, {50, 50}, Qt::red), folder.picture(u"1.png"_s, {50, 50}, Qt::green)};
        panel.generateButtonsByStateNames(u"1234567"_s.split(QString(), Qt::SkipEmptyParts)); // do not fit
        panel.generateButtonsByStateNames({u"old"_s, u"older"_s});
        panel.generateButtonsByStateNames({u"Off"_s, u"On"_s, u"Auto"_s});
        QCOMPARE(child<BaseKnobStateWidget>(&panel, "knobStateWidget")->totalButtonNum(), 5);
        auto const* const pages = panel.findChild<QButtonGroup*>();
        auto* const on = pages->buttons().at(3);
        QVERIFY(on->isVisible() && pages->checkedButton() == pages->buttons().at(2));
        QCOMPARE(pages->checkedButton()->geometry(), QRect(138, 206, 36, 16));
        panel.setKnobIconList(icons);
        panel.setKnobTitleList({u"off"_s, u"on"_s});
        QVERIFY(icon() == Qt::red && panel.getCurrentIcon() == icons[0]);
        QTest::mouseClick(on, Qt::LeftButton);
        QVERIFY(icon() == Qt::green && edit->text() == u"on"_s && panel.getCurrentIcon() == icons[1]);
        panel.lineEditDisconnect();
        edit->setText(u"quiet"_s);
        panel.lineEditConnect();
        panel.lineEditConnect();
        edit->setText(u"set by code"_s);
        QTest::keyClicks(edit, u"!"_s);
        panel.setCurrentId(2); // neither title nor icon
        QVERIFY(icon() == Qt::green && panel.getCurrentIcon().isEmpty());
        edit->clear();
        panel.setCurrentId(1);
        QVERIFY(pages->checkedButton() == on && child(&panel, "lblName")->text() == u"On"_s);
        QVERIFY(edit->text() == u"set by code!"_s);
        QCOMPARE(child(&panel, "lblImageText")->text(), u"set by code!"_s);
        panel.setCurrentId(9);
        panel.onIconIndexChanged(2147483647);
        panel.onTextChanged(u"nowhere"_s);
        QCOMPARE(titled, (QList<QVariantList>{{1, u"set by code"_s}, {1, u"set by code!"_s}, {2, QString()},
                             {2147483647, u"nowhere"_s}}));
        QCOMPARE(paged, (QList<QVariantList>{{1}, {2}, {1}, {2147483647}}));
        panel.setKnobIconList({icons[0]});
        QVERIFY(!on->isVisible());
        panel.showButtons();
        QVERIFY(on->isVisible());
        child<QPushButton>(&panel, "btnSetting")->click();
        QCOMPARE(settings.size(), 1);
    }

    void tooltips()
    {
        qApp->installEventFilter(this);
        auto button = std::make_unique<MekTooltipButton>();
        button->setProperty("gaV4Lab", u"mute"_s);
        auto const send = [&](QEvent&& event) { QCoreApplication::sendEvent(button.get(), &event); };
        auto const hover = [&] { send(QHelpEvent(QEvent::ToolTip, {}, {})); };
        hover();
        hover();
        send(QEvent(QEvent::Leave));
        hover();
        send(QEnterEvent({}, {}, {}));
        button->setProperty("gaV4Lab", {});
        hover();
        QCOMPARE(reports, Names()); // posted
        // What is on its way arrives before the code that could deliver it may go.
        button.reset();
        QCOMPARE(reports, (Names{u"Tooltip/mute"_s, u"Tooltip/mute"_s, u"Tooltip/"_s}));
        qApp->removeEventFilter(this);
    }
};

QTEST_MAIN(tst_KeyFace)
#include "tst_KeyFace.moc"
