#include "relay/ZoLumenProxy.h"
#include "tests/Answers.h"
#include "tests/TestFolder.h"
#include "tests/TestGif.h"
#include "uikit/DialogIconBuilder.h"
#include "uikit/DialogIconEditMenu.h"

#include <QApplication>
#include <QBuffer>
#include <QComboBox>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QMovie>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

using Act = std::function<void(QWidget&)>;
using Pixels = QList<std::pair<QPoint, QRgb>>;

constexpr QSize kFace{150, 108};
auto const kNothingPainted = qRgba(0, 0, 0, 0);

//! Left half red, right half blue.
QImage halves(QSize const& size, QImage::Format format = QImage::Format_ARGB32)
{
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            image.setPixel(x, y, x < size.width() / 2 ? qRgb(255, 0, 0) : qRgb(0, 0, 255));
        }
    }
    return image.convertToFormat(format);
}

template <typename Child>
Child* child(QWidget& dialog, char const* name)
{
    return dialog.findChild<Child*>(QString::fromLatin1(name));
}

} // namespace

class tst_IconBuilder : public QObject
{
    Q_OBJECT

private:
    QString path(QString const& name) const { return folder->path(name); }
    QString picture(QString const& name, QSize const& size = {20, 10}) const
    {
        return halves(size).save(path(name)) ? path(name) : QString();
    }
    QStringList icons() const { return QDir(path(u"data/icon"_s)).entryList(QDir::Files | QDir::Hidden); }
    //! Takes long enough to be stopped on the way.
    QString longAnimation() const
    {
        QSize const size(640, 480);
        return folder->file(u"long.gif"_s,
            TestGif::gif(QList<TestGif::Drawn>(80, {.area = {{}, size}, .delay = 5}), 0, size));
    }

    std::unique_ptr<TestFolder> folder;

private slots:
    void init()
    {
        // The offscreen platform's own.
        QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s));
        folder = std::make_unique<TestFolder>();
        ZoLumenProxy::getInstance().configDir = path(u"data"_s);
    }

    // Its buttons, and closing it, are the property frame's test's.
    void menuAnswers_data()
    {
        QTest::addColumn<Act>("act");
        QTest::addColumn<int>("answer");
        auto const leave = [](QWidget* widget) {
            QEvent event(QEvent::Leave);
            QApplication::sendEvent(widget, &event);
        };
        QTest::newRow("pointer leaves") << Act([leave](QWidget& menu) { leave(&menu); }) << -1;
        QTest::newRow("pointer leaves a button only") << Act([leave](QWidget& menu) {
            leave(child<QPushButton>(menu, "btnLocalDisk"));
            QTest::mouseClick(child<QPushButton>(menu, "btnIconBuilder"), Qt::LeftButton);
        }) << 1;
        QTest::newRow("hidden") << Act([](QWidget& menu) { menu.hide(); }) << -1;
        QTest::newRow("keyboard") << Act([](QWidget& menu) {
            QVERIFY(QTest::qWaitForWindowActive(&menu));
            QTest::keyClick(menu.focusWidget(), Qt::Key_Tab);
            QTest::keyClick(menu.focusWidget(), Qt::Key_Return);
        }) << 1;
    }

    void menuAnswers()
    {
        QFETCH(Act, act);
        DialogIconEditMenu menu;
        answerInTurn({[act](QWidget* dialog) { act(*dialog); }});
        QTEST(menu.exec(), "answer");
    }

    void looks()
    {
        DialogIconBuilder builder;
        QVERIFY(builder.windowFlags().testFlag(Qt::FramelessWindowHint));
        builder.show();
        // In the order of the modes.
        auto const* const modes = child<QComboBox>(builder, "cbBuilderList");
        for (int i = 0; auto const* mode : {"FILL", "FIT", "STRETCH", "TILE", "CENTER"}) {
            QCOMPARE(modes->itemText(i++), u"LAB_SET_BG_PIC_"_s + QString::fromLatin1(mode));
        }
        QVERIFY(!child<QPushButton>(builder, "btnOpenFile")->accessibleName().isEmpty());
        QVERIFY(!child<QProgressBar>(builder, "progressBar")->isVisible());

        // By the keyboard from OK, which has the focus first, through all controls.
        builder.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&builder));
        for (auto const* name : {"btnOk", "btnOpenFile", "cbBuilderList", "btnCancel", "btnOk"}) {
            QCOMPARE(builder.focusWidget()->objectName(), QString::fromLatin1(name));
            QTest::keyClick(builder.focusWidget(), Qt::Key_Tab);
        }
    }

    void fillsTheFace_data()
    {
        QTest::addColumn<QImage>("picture");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QImage::Format>("format");
        QTest::addColumn<Pixels>("pixels");
        auto const red = qRgb(255, 0, 0);
        auto const blue = qRgb(0, 0, 255);
        auto const black = qRgb(0, 0, 0);
        auto const argb = QImage::Format_ARGB32;
        auto const any = QImage::Format_Invalid;
        auto const row = [](char const* name, QImage const& picture, int mode, QImage::Format format,
                             Pixels const& pixels) {
            QTest::newRow(name) << picture << mode << format << pixels;
        };
        auto const split = Pixels{{{70, 50}, red}, {{80, 50}, blue}};
        auto const covered = split + Pixels{{{0, 0}, red}, {{149, 107}, blue}};
        auto const indexed = QImage::Format_Indexed8;

        row("fill, too wide", halves({600, 108}), 0, any, covered);
        row("fill, a line", halves({20'000, 1}), 0, any, {});
        row("fill, a pillar", halves({2, 20'000}), 0, any, {{{10, 50}, red}, {{140, 50}, blue}});
        row("fit, wide", halves({300, 108}), 1, argb,
            split + Pixels{{{9, 26}, kNothingPainted}, {{9, 27}, red}, {{9, 81}, kNothingPainted}});
        row("fit, without alpha", halves({300, 108}, QImage::Format_RGB32), 1, QImage::Format_RGB32,
            split + Pixels{{{9, 9}, black}});
        row("fit, indexed", halves({300, 108}, indexed), 1, argb, split + Pixels{{{9, 9}, kNothingPainted}});
        row("stretch", halves({900, 20}), 2, any, covered);
        row("tile", halves({20, 10}), 3, argb,
            {{{0, 0}, red}, {{10, 0}, blue}, {{20, 10}, red}, {{149, 107}, red}, {{139, 99}, blue}});
        row("tile, large", halves({200, 300}), 3, argb,
            {{{0, 0}, red}, {{99, 107}, red}, {{100, 0}, blue}, {{149, 107}, blue}});
        row("tile, indexed", halves({20, 10}, indexed), 3, argb, {{{0, 0}, red}});
        row("center, small", halves({20, 10}), 4, argb,
            {{{64, 50}, kNothingPainted}, {{65, 49}, red}, {{84, 58}, blue}, {{84, 59}, kNothingPainted},
                {{85, 50}, kNothingPainted}});
        row("center, large", halves({800, 600}), 4, argb,
            {{{74, 0}, red}, {{75, 107}, blue}, {{0, 0}, red}, {{149, 0}, blue}});
        row("center, wide only", halves({201, 10}, QImage::Format_RGB888), 4, QImage::Format_RGB888,
            {{{74, 54}, red}, {{75, 54}, blue}, {{0, 48}, black}});
    }

    void fillsTheFace()
    {
        QFETCH(QImage, picture);
        QFETCH(int, mode);
        QFETCH(QImage::Format, format);
        QFETCH(Pixels, pixels);
        auto const face = IconTransform::apply(picture, IconTransform::Mode{mode});
        QCOMPARE(face.size(), kFace);
        if (format != QImage::Format_Invalid) {
            QCOMPARE(face.format(), format);
        }
        for (auto const& [at, color] : pixels) {
            QVERIFY2(face.pixel(at) == color,
                qPrintable(u"%1,%2 is %3"_s.arg(at.x()).arg(at.y()).arg(face.pixel(at), 8, 16)));
        }
    }

    void refusesUnknownModes()
    {
        auto const file = picture(u"a.png"_s);
        DialogIconBuilder builder;
        for (int const mode : {5, -1}) {
            QTest::ignoreMessage(QtWarningMsg,
                "[QImage DialogIconBuilder::getIconTransform(QString, const int)] Unexpect background mode");
            QVERIFY(builder.getIconTransform(file, mode).isNull());
        }
    }

    void readsPictures_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("warning");
        auto const unreadable = u"^\\[IconPicture\\]\\[read\\]"_s;
        auto const unplayable = u"^\\[AnimatedIcon\\]\\[play\\]"_s;
        QByteArray good;
        QBuffer buffer(&good);
        QVERIFY(halves({4, 4}).save(&buffer, "PNG"));
        auto const row = [](char const* name, char const* file, QByteArray const& content,
                             QString const& log = {}) {
            QTest::newRow(name) << QString::fromLatin1(file) << content << log;
        };
        row("wrongly named", "a.jpg", good);
        row("an animation named otherwise", "a.png", TestGif::gif({{}, {}}));
        row("an animation", "a.GIF", TestGif::gif({{}, {}}));
        row("empty", "a.png", {}, unreadable);
        row("text", "a.png", "Dear Sir or Madam", unreadable);
        row("truncated", "a.png", good.first(40), unreadable);
        row("gigantic", "a.png", "P6 32000 32000 255 rgb", unreadable + ".*is too large"_L1);
        row("an empty animation", "a.gif", {}, unplayable);
        row("a gigantic animation", "a.gif", TestGif::gif({{}}, 0, {60'000, 60'000}), unplayable);
    }

    //! What is missing leaves the preview as it was; what cannot be read empties it, with a word in the log,
    //! and OK does not write the picture before it under the new name.
    void readsPictures()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, warning);
        bool const isShown = warning.isEmpty();
        DialogIconBuilder builder;
        auto* const preview = child<QLabel>(builder, "imgIcon");
        builder.setImagePath(picture(u"before.png"_s));
        for (auto const& nothing :
            {path(u"missing.png"_s), path(u"missing.gif"_s), folder->path(), QString()}) {
            builder.setImagePath(nothing);
            QCOMPARE(builder.getImagePath(), nothing);
            QCOMPARE(preview->pixmap().size(), kFace);
        }

        folder->file(name, bytes);
        if (!isShown) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(warning));
        }
        builder.setImagePath(path(name));
        bool const isGif = name.endsWith("gif"_L1, Qt::CaseInsensitive);
        QCOMPARE(preview->movie() != nullptr || !preview->pixmap().isNull(), isShown);
        QCOMPARE(child<QComboBox>(builder, "cbBuilderList")->isEnabled(), !isGif);
        if (isShown) {
            return;
        }
        if (isGif) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^\\[GifConverter\\]"_s));
        }
        QSignalSpy const finished(&builder, &QDialog::finished);
        child<QPushButton>(builder, "btnOk")->click();
        QTRY_COMPARE(finished.size(), 1);
        QFile copy(builder.getImagePath());
        QVERIFY(copy.open(QIODevice::ReadOnly));
        QCOMPARE(copy.readAll(), bytes);
    }

    void turnsPhotosUpright()
    {
        // As a phone stores it: taken upright, red above blue, and lying on its side in the file, with a note
        // (Exif) of how to turn it. Qt does not write one.
        QImage const photo = halves({2600, 2500}, QImage::Format_RGB32);
        QByteArray jpeg;
        QBuffer buffer(&jpeg);
        QVERIFY(photo.save(&buffer, "JPG"));
        folder->file(u"photo.jpg"_s, jpeg.insert(2, QByteArray::fromHex("ffe10022457869660000"
                                                                        "49492a0008000000"
                                                                        "0100"
                                                                        "120103000100000006000000"
                                                                        "00000000")));

        DialogIconBuilder builder;
        QImage const upright = photo.transformed(QTransform().rotate(90));
        auto const level = [](QImage const& image, QPoint at) { return qRed(image.pixel(at)) > 200; };
        for (int mode = 0; mode < 5; ++mode) {
            auto const face = builder.getIconTransform(path(u"photo.jpg"_s), mode);
            auto const wanted = IconTransform::apply(upright, IconTransform::Mode{mode});
            for (auto const& at : {QPoint(75, 30), QPoint(75, 80), QPoint(2, 2), QPoint(147, 105)}) {
                QCOMPARE(level(face, at), level(wanted, at));
            }
        }
        // A file that was replaced is read again.
        QVERIFY(halves({20, 10}).save(path(u"photo.jpg"_s), "PNG"));
        QCOMPARE(builder.getIconTransform(path(u"photo.jpg"_s), 4).pixel(65, 50), qRgb(255, 0, 0));
    }

    void writesAStillPicture_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("mode");
        for (int mode = 0; mode < 5; ++mode) {
            QTest::addRow("png, mode %d", mode) << u"a.png"_s << mode;
        }
        QTest::newRow("jpg") << u"b.c.jpg"_s << 1;
    }

    void writesAStillPicture()
    {
        QFETCH(QString, name);
        QFETCH(int, mode);
        auto const file = picture(name, {300, 200});
        QFile::setPermissions(file, QFile::ReadOwner);
        auto const before = QFileInfo(file).size();

        DialogIconBuilder builder;
        QSignalSpy const changed(&builder, &DialogIconBuilder::fileChanged);
        builder.setImagePath(file);
        answerInTurn({[mode](QWidget* dialog) {
            auto* const modes = child<QComboBox>(*dialog, "cbBuilderList");
            for (int i = 0; i < mode; ++i) {
                QTest::keyClick(modes, Qt::Key_Down);
            }
            QTest::keyClick(modes, Qt::Key_Return);
        }});
        QCOMPARE(builder.exec(), 1);

        QFileInfo const icon(builder.getImagePath());
        QCOMPARE(changed, (QList<QVariantList>{{path(u"data/icon"_s)}}));
        QVERIFY(QRegularExpression(u"^\\d{12}$"_s).match(icon.completeBaseName()).hasMatch());
        QCOMPARE(icon.suffix(), QFileInfo(name).suffix());
        QImage const written(icon.filePath());
        QCOMPARE(written.size(), kFace);
        if (icon.suffix() == "png"_L1) {
            QCOMPARE(written, builder.getIconTransform(file, mode).convertToFormat(written.format()));
        }
        QCOMPARE(QFileInfo(file).size(), before);
        QCOMPARE(icons(), QStringList(icon.fileName()));
    }

    //! Hosts rely on it, so it must not be "repaired".
    void overwritesThePictureWhoseCopyFails()
    {
        auto const file = picture(u"a.png"_s, {300, 200});
        QVERIFY(QDir().mkpath(path(u"data/icon"_s)));
        auto const now = QDateTime::currentDateTime();
        for (int second = 0; second < 20; ++second) {
            auto const taken = now.addSecs(second).toString(u"yyyyMMddmmss"_s) + ".png"_L1;
            folder->file(u"data/icon/"_s + taken, "taken");
        }
        DialogIconBuilder builder;
        builder.setImagePath(file);
        child<QPushButton>(builder, "btnOk")->click();
        QCOMPARE(builder.result(), 1);
        QCOMPARE(builder.getImagePath(), file);
        QCOMPARE(QImage(file).size(), kFace);
        QCOMPARE(icons().size(), 20);
    }

    void savesForeignIcons()
    {
        auto pixmap = QPixmap::fromImage(halves({600, 200}));
        pixmap.setDevicePixelRatio(2);
        DialogIconBuilder builder;
        auto const file = builder.saveExtAppIcon(pixmap);
        QVERIFY(QRegularExpression(u"/data/icon/\\d{12}\\.png$"_s).match(file).hasMatch());
        QImage const written(file);
        QCOMPARE(written.size(), kFace);
        QCOMPARE(written.pixel(3, 3), qRgb(255, 0, 0));
        QCOMPARE(written.pixel(146, 3), qRgb(0, 0, 255));
        QVERIFY(builder.saveExtAppIcon(QPixmap()).isEmpty());
        ZoLumenProxy::getInstance().configDir.clear();
        QVERIFY(builder.saveExtAppIcon(pixmap).isEmpty());
    }

    void choosesAnotherFile()
    {
        auto const other = picture(u"b.png"_s, kFace);
        DialogIconBuilder builder;
        builder.setImagePath(picture(u"a.png"_s));
        auto const answer = [&](Act const& act) {
            answerInTurn({[act](QWidget* dialog) { act(*dialog); }});
            child<QPushButton>(builder, "btnOpenFile")->click();
        };
        answer([](QWidget& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
        QCOMPARE(builder.getImagePath(), path(u"a.png"_s));
        answer([&](QWidget& dialog) {
            auto& files = dynamic_cast<QFileDialog&>(dialog);
            QCOMPARE(files.nameFilters(), QStringList(u"LAB_FILTER_IMAGE_FILES(*.jpg *.png *.gif)"_s));
            files.setDirectory(folder->path());
            child<QLineEdit>(files, "fileNameEdit")->setText(other);
            QMetaObject::invokeMethod(&files, "accept", Qt::QueuedConnection);
        });
        QCOMPARE(builder.getImagePath(), other);
        QCOMPARE(child<QLabel>(builder, "imgIcon")->pixmap().toImage().pixel(10, 10), qRgb(255, 0, 0));
    }

    void movesWithTheMouse()
    {
        DialogIconBuilder builder;
        builder.move(50, 60);
        builder.show();
        auto const drag = [&](char const* from) {
            auto* const widget = child<QWidget>(builder, from);
            QTest::mousePress(widget, Qt::LeftButton, {}, {9, 9});
            QTest::mouseMove(widget, {29, 14});
            QTest::mouseRelease(widget, Qt::LeftButton, {}, {9, 9});
            QTest::mouseMove(widget, {0, 0});
            return builder.pos();
        };
        QCOMPARE(drag("widgetFooter"), QPoint(50, 60));
        QCOMPARE(drag("lblTitle"), QPoint(70, 65));
    }

    void convertsAnAnimation()
    {
        auto const file = folder->file(u"a.GIF"_s,
            TestGif::gif(QList<TestGif::Drawn>(6, {.area = {0, 0, 300, 100}, .delay = 50}), 3, {300, 100}));
        DialogIconBuilder builder;
        QSignalSpy const changed(&builder, &DialogIconBuilder::fileChanged);
        builder.setImagePath(picture(u"still.png"_s));
        builder.setImagePath(file);
        QCOMPARE(child<QLabel>(builder, "imgIcon")->movie()->scaledSize(),
            QSize(150, 50) * builder.devicePixelRatioF());
        answerInTurn({[](QWidget* dialog) { child<QPushButton>(*dialog, "btnOk")->click(); }});
        QCOMPARE(builder.exec(), 1);
        QCOMPARE(changed.size(), 1);
        QVERIFY(QRegularExpression(u"/data/icon/\\d{12}\\.GIF$"_s).match(builder.getImagePath()).hasMatch());
        auto const check = [](QString const& icon) {
            QImageReader reader(icon);
            QCOMPARE(reader.size(), QSize(150, 50));
            QCOMPARE(reader.imageCount(), 6);
            QCOMPARE(reader.loopCount(), 3);
        };
        check(builder.getImagePath());
        QCOMPARE(icons().size(), 1);

        // The same at one stroke.
        builder.gifConvert(file, path(u"b.gif"_s), {150, 54});
        check(path(u"b.gif"_s));
    }

    void keepsTheEventLoopTurning()
    {
        auto const file = longAnimation();
        // The machine may be busy with something else: one undisturbed run out of five has to be to be had.
        qint64 longest = 0;
        for (int run = 0; run < 5; ++run) {
            DialogIconBuilder builder;
            builder.setImagePath(file);
            builder.show();
            auto* const bar = child<QProgressBar>(builder, "progressBar");
            QSignalSpy const progress(bar, &QProgressBar::valueChanged);
            QSignalSpy const finished(&builder, &QDialog::finished);
            longest = 0;
            QElapsedTimer sinceLast;
            QTimer beat;
            connect(&beat, &QTimer::timeout, &builder, [&] { longest = qMax(longest, sinceLast.restart()); });
            beat.start(1);
            sinceLast.start();
            child<QPushButton>(builder, "btnOk")->click();
            QVERIFY(builder.isVisible() && bar->isVisible());
            QVERIFY(!child<QPushButton>(builder, "btnOk")->isEnabled());
            QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 60'000);
            QVERIFY(progress.size() > 20);
            QCOMPARE(QImageReader(builder.getImagePath()).size(), QSize(144, 108));
            QFile::remove(builder.getImagePath());
            if (longest < 50) {
                break;
            }
        }
        QCOMPARE_LT(longest, 50);
    }

    void cancels_data()
    {
        QTest::addColumn<Act>("act");
        QTest::newRow("button") << Act(
            [](QWidget& dialog) { child<QPushButton>(dialog, "btnCancel")->click(); });
        QTest::newRow("Return on it") << Act([](QWidget& dialog) {
            child<QPushButton>(dialog, "btnCancel")->setFocus();
            QTest::keyClick(child<QPushButton>(dialog, "btnCancel"), Qt::Key_Return);
        });
        QTest::newRow("Escape") << Act([](QWidget& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
        QTest::newRow("closed") << Act([](QWidget& dialog) { dialog.close(); });
        QTest::newRow("ended by the host")
            << Act([](QWidget& dialog) { dynamic_cast<QDialog&>(dialog).done(7); });
        QTest::newRow("deleted") << Act([](QWidget& dialog) { delete &dialog; });
    }

    //! At rest and in the middle of a conversion.
    void cancels()
    {
        QFETCH(Act, act);
        bool const byHost = QLatin1StringView(QTest::currentDataTag()) == "ended by the host"_L1;
        for (auto const& file : {picture(u"a.png"_s), longAnimation()}) {
            auto const before = QFileInfo(file).size();
            QPointer<DialogIconBuilder> builder = new DialogIconBuilder;
            QSignalSpy const finished(builder, &QDialog::finished);
            builder->setImagePath(file);
            builder->show();
            if (file.endsWith("gif"_L1)) {
                child<QPushButton>(*builder, "btnOk")->click();
                QTRY_VERIFY(child<QProgressBar>(*builder, "progressBar")->value() > 0);
            }
            act(*builder);
            if (builder) {
                QTRY_COMPARE(finished.size(), 1);
                QCOMPARE(builder->result(), byHost ? 7 : 0);
                QCOMPARE(builder->getImagePath(), byHost ? file : QString());
                delete builder;
            }
            QCOMPARE(icons(), QStringList());
            QCOMPARE(QFileInfo(file).size(), before);
        }
    }
};

QTEST_MAIN(tst_IconBuilder)
#include "tst_IconBuilder.moc"
