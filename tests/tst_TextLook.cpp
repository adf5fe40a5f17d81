#include "tests/Answers.h"
#include "uikit/SelectColorWidget.h"
#include "uikit/ZoDisplayViewAttribute.h"
#include "uikit/ZoDisplayViewLabelHandler.h"
#include "uikit/ZoDisplayViewMenu.h"
#include "uikit/ZoDisplayViewTextSetting.h"

#include <QAbstractItemView>
#include <QButtonGroup>
#include <QColorDialog>
#include <QComboBox>
#include <QFontDatabase>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;
using Edit = std::function<void(ZoDisplayViewAttribute&)>;

namespace {

int lowestRowOfText(QLabel& label)
{
    QImage const image = label.grab().toImage();
    for (int y = image.height() - 1; y >= 0; --y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y).red() > 200) {
                return y;
            }
        }
    }
    return -1;
}

} // namespace

class tst_TextLook : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s)); }

    void json_data()
    {
        QTest::addColumn<QJsonObject>("json");
        QTest::addColumn<Edit>("expected");
        auto const row = [](
                             char const* name, char const* json, Edit const& expected = [](auto&) {}) {
            QTest::newRow(name) << QJsonDocument::fromJson(json).object() << expected;
        };
        row("empty", "{}");
        row("everything",
            R"({"family": "Serif", "size": 18, "color": "#0080ff", "horAlignment": 2, "bold": true, "italic": true,
                "underLine": true})",
            [](auto& a) {
                a.family = u"Serif"_s;
                a.size = 18;
                a.color = QColor(0, 128, 255);
                a.horAlignment = 2;
                a.bold = a.italic = a.underLine = true;
            });
        row("wrong types",
            R"({"family": 5, "size": "big", "color": 7, "horAlignment": "left", "bold": 1, "italic": "true"})",
            [](auto& a) { a.size = a.horAlignment = 0; });
        row("colour by name", R"({"color": "tomato"})", [](auto& a) { a.color = QColor(255, 99, 71); });
        row("colour that is none", R"({"color": "no colour"})");
        row("size out of the list", R"({"size": -40})", [](auto& a) { a.size = -40; });
    }

    void json()
    {
        QFETCH(QJsonObject, json);
        QFETCH(Edit, expected);
        ZoDisplayViewAttribute wanted;
        wanted.family.clear();
        wanted.color = QColor(255, 255, 255);
        wanted.size = 13;
        wanted.reserved = 64;
        wanted.horAlignment = 132;
        wanted.bold = wanted.italic = wanted.underLine = false;
        expected(wanted);
        auto const read = ZoDisplayViewAttribute::fromJson(json);
        QCOMPARE(read, wanted);
        QJsonObject const written = ZoDisplayViewAttribute::toJson(read);
        QCOMPARE(written.keys(), (QStringList{u"bold"_s, u"color"_s, u"family"_s, u"horAlignment"_s,
                                     u"italic"_s, u"size"_s, u"underLine"_s}));
        QCOMPARE(ZoDisplayViewAttribute::fromJson(written), wanted);
        QVERIFY(QMetaType::fromName("ZoDisplayViewAttribute").isValid());
        wanted.color = QColor(1, 2, 254, 10); // loses its alpha
        QCOMPARE(ZoDisplayViewAttribute::toJson(wanted).value(u"color"_s), QJsonValue(u"#0102fe"_s));
    }

    void labels_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("previewPx"); // the key face shows it twice as large
        QTest::newRow("default") << 13 << 13;
        QTest::newRow("zero") << 0 << 1;
        QTest::newRow("negative") << -2000000000 << 1;
        QTest::newRow("gigantic") << 2000000000 << 500;
    }

    void labels()
    {
        QFETCH(int, size);
        QFETCH(int, previewPx);
        QWidget parent;
        QLabel label(u"Agjy"_s, &parent);
        label.setGeometry(7, 50, 60, 10);
        auto const check = [&](int top, int height, int px, QString const& border, bool on) {
            QCOMPARE(label.geometry(), QRect(7, top, 60, height));
            QVERIFY(label.styleSheet().contains(
                u"color: rgb(255,0,9); font-size:%1px; %2"_s.arg(px).arg(border)));
            auto const& font = label.font();
            QCOMPARE(font.weight(), on ? 700 : 400);
            QVERIFY(font.italic() == on && font.underline() == on);
        };
        ZoDisplayViewAttribute look;
        look.size = size;
        look.color = QColor(255, 0, 9);
        look.bold = look.italic = look.underLine = true;
        ZoDisplayViewLabelHandler::modifyPropertyWidgetLabel(&label, 144, look);
        check(144 - previewPx - 8, previewPx + 5, previewPx, u"border:0px"_s, true);

        look.bold = look.italic = look.underLine = false;
        for (auto const& family : {u"No such family"_s, QString()}) { // no family: as it was
            look.family = family;
            ZoDisplayViewLabelHandler::modifyIconWidgetLabel(&label, 108, look);
            check(108 - 2 * previewPx - 10, 2 * previewPx + 4, 2 * previewPx, u"border:1px"_s, false);
            QCOMPARE(label.font().family(), u"No such family"_s);
        }
    }

    void textSitsAtTheBottom()
    {
        QLabel label(u"X"_s);
        label.resize(75, 18);
        ZoDisplayViewAttribute look;
        int lowest = -1;
        for (int alignment : {0x41, 1, 2, 4, 132, 0, -1, 0x7fffffff}) {
            look.horAlignment = alignment;
            ZoDisplayViewLabelHandler::modifyPropertyWidgetLabel(&label, 144, look);
            QVERIFY(label.alignment().testFlag(Qt::AlignBottom));
            if (lowest < 0) {
                lowest = lowestRowOfText(label);
            }
            QCOMPARE(lowestRowOfText(label), lowest);
        }
    }

    // Every control both ways: set by the program it is silent, used by the user it reports.
    void edits_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<int>("key"); // 0: the mouse
        QTest::addColumn<Edit>("before");
        QTest::addColumn<Edit>("after");
        Edit const nothing = [](auto&) {};
        Edit const bold = [](auto& a) { a.bold = true; };
        Edit const centre = [](auto& a) { a.horAlignment = 4; };
        Edit const left = [](auto& a) { a.horAlignment = 1; };
        auto const sized = [](int size) -> Edit { return [size](auto& a) { a.size = size; }; };
        auto const row = [](char const* name, char const* control, int key, Edit const& before,
                             Edit const& after) {
            QTest::newRow(name) << QString::fromLatin1(control) << key << before << after;
        };
        row("bold on", "btnBold", 0, nothing, bold);
        row("bold off", "btnBold", Qt::Key_Space, bold, [](auto& a) { a.bold = false; });
        row("italic", "btnItalic", Qt::Key_Return, nothing, [](auto& a) { a.italic = true; });
        row("underline", "btnUnderLine", 0, nothing, [](auto& a) { a.underLine = true; });
        row("left", "btnAlignLeft", 0, nothing, left);
        row("centre of the default", "btnAlignCenter", 0, nothing, centre);
        row("centre from left", "btnAlignCenter", 0, left, centre);
        row("right", "btnAlignRight", Qt::Key_Space, centre, [](auto& a) { a.horAlignment = 2; });
        row("larger", "comboBoxFontSize", Qt::Key_Down, nothing, sized(14));
        row("largest", "comboBoxFontSize", Qt::Key_End, sized(6), sized(18));
        row(
            "first family", "comboBoxFontFamily", Qt::Key_Home,
            [](auto& a) { a.family = QFontDatabase::families().constLast(); },
            [](auto& a) { a.family = QFontDatabase::families().constFirst(); });
    }

    void edits()
    {
        QFETCH(QString, control);
        QFETCH(int, key);
        QFETCH(Edit, before);
        QFETCH(Edit, after);
        ZoDisplayViewTextSetting panel;
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        QSignalSpy changes(&panel, &ZoDisplayViewTextSetting::viewAttributeChanged);
        ZoDisplayViewAttribute wanted;
        wanted.reserved = 5;
        before(wanted);
        panel.setViewAttribute(wanted);
        QCOMPARE(panel.getViewAttribute(), wanted);
        QCOMPARE(changes.size(), 0);

        auto* const widget = panel.findChild<QWidget*>(control);
        QVERIFY(widget);
        if (key) {
            widget->setFocus();
            QTest::keyClick(widget, static_cast<Qt::Key>(key));
        } else {
            QTest::mouseClick(widget, Qt::LeftButton);
        }
        after(wanted);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes.at(0).at(0).value<ZoDisplayViewAttribute>(), wanted);
        QCOMPARE(panel.getViewAttribute(), wanted);
    }

    void shownWithoutEcho()
    {
        ZoDisplayViewTextSetting panel;
        auto* const sizes = panel.findChild<QComboBox*>(u"comboBoxFontSize"_s);
        auto* const families = panel.findChild<QComboBox*>(u"comboBoxFontFamily"_s);
        QCOMPARE(sizes->itemData(12), QVariant(18));
        QSignalSpy changes(&panel, &ZoDisplayViewTextSetting::viewAttributeChanged);
        ZoDisplayViewAttribute look;
        look.family = QFontDatabase::families().constLast();
        look.size = 9;
        look.color = QColor(3, 4, 5);
        look.horAlignment = 2;
        look.italic = true;
        panel.setViewAttribute(look);
        QCOMPARE(families->currentText(), look.family);
        QCOMPARE(sizes->currentText(), u"9 px"_s);
        auto const button = [&](char const* name) {
            return panel.findChild<QPushButton*>(QString::fromLatin1(name));
        };
        QVERIFY(button("btnAlignRight")->isChecked() && button("btnItalic")->isChecked());
        QVERIFY(!button("btnBold")->isChecked());
        QVERIFY(panel.findChild<QLabel*>(u"labelColor"_s)->styleSheet().contains(u"rgb(3,4,5)"_s));
        QCOMPARE(button("btnSelectColor")->toolTip(), u"LAB_TIP_TEXT_EDIT_COLOR : #030405"_s);

        // What the lists do not have stays in the record, and the lists stay where they are.
        look.family = u"No such family"_s;
        look.size = 40;
        look.horAlignment = 132;
        panel.setViewAttribute(look);
        QCOMPARE(sizes->currentText(), u"9 px"_s);
        QCOMPARE(families->currentText(), QFontDatabase::families().constLast());
        QVERIFY(button("btnAlignCenter")->isChecked());
        QCOMPARE(panel.getViewAttribute(), look);
        QCOMPARE(changes.size(), 0);
        // The user picks the entry that is shown already.
        panel.show();
        sizes->showPopup();
        QTest::keyClick(static_cast<QWidget*>(sizes->view()), Qt::Key_Return);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(panel.getViewAttribute().size, 9);
    }

    void keyboardReachesEverything()
    {
        ZoDisplayViewTextSetting panel;
        panel.show();
        QVERIFY(QTest::qWaitForWindowActive(&panel));
        QStringList const walk{u"comboBoxFontFamily"_s, u"comboBoxFontSize"_s, u"btnBold"_s, u"btnItalic"_s,
            u"btnUnderLine"_s, u"btnAlignCenter"_s, u"btnSelectColor"_s, u"btnClose"_s,
            u"comboBoxFontFamily"_s};
        for (QString const& name : walk) {
            QCOMPARE(panel.focusWidget()->objectName(), name);
            QTest::keyClick(panel.focusWidget(), Qt::Key_Tab);
        }
        panel.findChild<QWidget*>(u"btnClose"_s)->setFocus();
        QSignalSpy closing(&panel, &ZoDisplayViewTextSetting::aboutToClose);
        QTest::keyClick(panel.focusWidget(), Qt::Key_Return); // on the close button
        QTest::keyClick(panel.focusWidget(), Qt::Key_Escape);
        QTest::mouseClick(panel.findChild<QPushButton*>(u"btnClose"_s), Qt::LeftButton);
        panel.close();
        QCOMPARE(closing.size(), 4);
        QVERIFY(panel.isVisible());
        for (auto const* control : panel.findChildren<QWidget*>()) {
            bool const isPicture =
                qobject_cast<QAbstractButton const*>(control) || qobject_cast<QComboBox const*>(control);
            QVERIFY2(!isPicture || !control->accessibleName().isEmpty(), qPrintable(control->objectName()));
        }
    }

    void colourDialog()
    {
        for (bool accepted : {true, false}) {
            ZoDisplayViewTextSetting panel;
            ZoDisplayViewAttribute look;
            look.color = QColor(1, 2, 3);
            panel.setViewAttribute(look);
            panel.show();
            auto* const button = panel.findChild<QPushButton*>(u"btnSelectColor"_s);
            QStringList order;
            connect(&panel, &ZoDisplayViewTextSetting::viewAttributeChanged, this,
                [&] { order += u"changed"_s; });
            connect(&panel, &ZoDisplayViewTextSetting::aboutToShow, this, [&] { order += u"show"_s; });
            answerInTurn({[&](QWidget* open) {
                auto& dialog = dynamic_cast<QColorDialog&>(*open);
                QCOMPARE(dialog.currentColor(), QColor(1, 2, 3));
                QCOMPARE(dialog.pos(), button->mapToGlobal(QPoint(0, 0)));
                dialog.setCurrentColor(QColor(200, 100, 50));
                QMetaObject::invokeMethod(&dialog, accepted ? "accept" : "reject");
            }});
            QTest::mouseClick(button, Qt::LeftButton);
            QCOMPARE(order, accepted ? (QStringList{u"changed"_s, u"show"_s}) : QStringList{u"show"_s});
            QCOMPARE(panel.getViewAttribute().color, accepted ? QColor(200, 100, 50) : QColor(1, 2, 3));
            QCOMPARE(button->toolTip().endsWith(u"#c86432"_s), accepted);
        }
    }

    void panelDeletedDuringColourDialog()
    {
        QWidget host;
        QPointer<ZoDisplayViewTextSetting> const panel(new ZoDisplayViewTextSetting(&host));
        panel->setWindowFlags(Qt::Widget); // inside the host, which the dialog then belongs to
        host.show();
        answerInTurn({[panel](QWidget* dialog) {
            delete panel;
            QMetaObject::invokeMethod(dialog, "accept");
        }});
        panel->findChild<QPushButton*>(u"btnSelectColor"_s)->click();
        QVERIFY(!panel);
    }

    void unsupportedFonts()
    {
        QStringList families{u"Arial"_s, u"Marlett"_s, u"System"_s, u"system"_s, u"Script MT"_s};
        ZoDisplayViewTextSetting::filterNotSupportFont(families);
        QCOMPARE(families, QStringList({u"Arial"_s, u"system"_s, u"Script MT"_s}));
    }

    void palette()
    {
        SelectColorWidget widget;
        auto const* const group = widget.findChild<QButtonGroup*>();
        QVERIFY(widget.findChild<QPushButton*>(u"btnColor_01"_s)->isChecked());
        QSignalSpy selected(&widget, &SelectColorWidget::colorSelected);
        widget.show();
        int id = 0;
        for (QRgb const value : {0xff0000u, 0xff7d00u, 0x00ff00u, 0x00ff7du, 0x00ffffu, 0x007dffu, 0x0000ffu,
                 0x7d00ffu, 0xff00ffu, 0xff7dffu}) {
            QColor const color(value);
            auto* const button =
                widget.findChild<QPushButton*>(u"btnColor_%1"_s.arg(++id, 2, 10, QChar(u'0')));
            for (QColor const& silent : {color.toHsv(), QColor(), QColor(1, 1, 1), QColor(255, 0, 0, 9)}) {
                widget.selectTargetColor(silent); // only the first is in the palette
                QCOMPARE(group->checkedButton(), button);
            }
            QCOMPARE(selected.size(), 0);
            QTest::mouseClick(button, Qt::LeftButton);
            QCOMPARE(selected.takeFirst().at(0).value<QColor>(), color);
        }
    }

    void menuOpensAboveItsButton()
    {
        QWidget window;
        window.setGeometry(100, 300, 300, 100);
        auto* const button = new QPushButton(&window);
        button->setGeometry(120, 40, 30, 20);
        auto* const menu = new ZoDisplayViewMenu(button);
        menu->addAction(u"one"_s);
        window.show();
        for (QPoint const where : {QPoint(220, 360), QPoint(790, 790)}) {
            menu->popup(where);
            QRect const opener(button->mapToGlobal(QPoint(0, 0)), button->size());
            QCOMPARE(menu->y() + menu->height(), opener.y());
            QVERIFY(qAbs(menu->geometry().center().x() - opener.center().x()) <= 1);
            menu->hide();
        }
        QVERIFY(menu->windowFlags().testFlag(Qt::FramelessWindowHint));
    }
};

QTEST_MAIN(tst_TextLook)
#include "tst_TextLook.moc"
