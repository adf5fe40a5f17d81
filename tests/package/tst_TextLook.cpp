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
#include <QJsonObject>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_TextLook : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s)); }

    void json_data()
    {
        QTest::addColumn<QJsonObject>("in");
        QTest::addColumn<QJsonObject>("changes"); // of what is written for no look at all
        auto const row = [](char const* name, QJsonObject const& in, QJsonObject const& changes) {
            QTest::newRow(name) << in << changes;
        };
        QJsonObject const everything{{u"family"_s, u"Serif"_s}, {u"size"_s, 18}, {u"color"_s, u"#0080ff"_s},
            {u"horAlignment"_s, 2}, {u"bold"_s, true}, {u"italic"_s, true}, {u"underLine"_s, true}};
        row("empty", {}, {});
        row("everything", everything, everything);
        row("wrong types",
            {{u"family"_s, 5}, {u"size"_s, u"big"_s}, {u"color"_s, 7}, {u"horAlignment"_s, u"left"_s},
                {u"bold"_s, 1}, {u"italic"_s, u"true"_s}},
            {{u"size"_s, 0}, {u"horAlignment"_s, 0}});
        row("colour by name", {{u"color"_s, u"tomato"_s}}, {{u"color"_s, u"#ff6347"_s}});
        row("colour with alpha", {{u"color"_s, u"#0a0102fe"_s}}, {{u"color"_s, u"#0102fe"_s}});
        row("colour that is none", {{u"color"_s, u"no colour"_s}}, {});
        row("size out of the list", {{u"size"_s, -40}}, {{u"size"_s, -40}});
    }

    void json()
    {
        QFETCH(QJsonObject, in);
        QFETCH(QJsonObject, changes);
        QJsonObject wanted{{u"family"_s, QString()}, {u"size"_s, 13}, {u"color"_s, u"#ffffff"_s},
            {u"horAlignment"_s, 132}, {u"bold"_s, false}, {u"italic"_s, false}, {u"underLine"_s, false}};
        for (auto const& key : changes.keys()) {
            wanted[key] = changes[key];
        }
        auto const read = ZoDisplayViewAttribute::fromJson(in);
        QCOMPARE(ZoDisplayViewAttribute::toJson(read), wanted);
        QCOMPARE(read.reserved, 64);
        QVERIFY(QMetaType::fromName("ZoDisplayViewAttribute").isValid());
    }

    void labels()
    {
        QWidget parent;
        QLabel label(u"Agjy"_s, &parent);
        label.setGeometry(7, 50, 60, 10);
        auto const check = [&](int top, int height, int px, QString const& border, bool on) {
            QCOMPARE(label.geometry(), QRect(7, top, 60, height));
            QVERIFY(label.styleSheet().contains(
                u"color: rgb(255,0,9); font-size:%1px; %2"_s.arg(px).arg(border)));
            QCOMPARE(label.font().weight(), on ? 700 : 400);
            QVERIFY(label.font().italic() == on && label.font().underline() == on);
        };
        ZoDisplayViewAttribute look;
        look.color = QColor(255, 0, 9);
        // The preview's pixels; the key face shows twice as many.
        for (auto const& [size, px] : {std::pair{13, 13}, {-2000000000, 1}, {2000000000, 500}}) {
            look.size = size;
            look.family = u"No such family"_s;
            look.bold = look.italic = look.underLine = true;
            ZoDisplayViewLabelHandler::modifyPropertyWidgetLabel(&label, 144, look);
            check(144 - px - 8, px + 5, px, u"border:0px"_s, true);

            look.family.clear(); // as it was
            look.bold = look.italic = look.underLine = false;
            ZoDisplayViewLabelHandler::modifyIconWidgetLabel(&label, 108, look);
            check(108 - 2 * px - 10, 2 * px + 4, 2 * px, u"border:1px"_s, false);
            QCOMPARE(label.font().family(), u"No such family"_s);
        }
    }

    void textSitsAtTheBottom()
    {
        QLabel label(u"X"_s);
        label.resize(75, 18);
        ZoDisplayViewAttribute look;
        QSet<int> lowest;
        for (int const alignment : {0x41, 1, 2, 4, 132, 0, -1, 0x7fffffff}) {
            look.horAlignment = alignment;
            ZoDisplayViewLabelHandler::modifyPropertyWidgetLabel(&label, 144, look);
            QVERIFY(label.alignment().testFlag(Qt::AlignBottom));
            lowest.insert(QRegion(label.grab().createHeuristicMask()).boundingRect().bottom());
        }
        QCOMPARE(lowest.size(), 1);
        QVERIFY(!lowest.contains(-1));
    }

    // Set by the program the panel is silent; each control that the user works reports once.
    void edits()
    {
        // Key 0: the mouse.
        std::tuple<char const*, int, void (*)(ZoDisplayViewAttribute&)> const edits[] = {
            {"btnBold", Qt::Key_Space, [](auto& look) { look.bold = false; }},
            {"btnBold", 0, [](auto& look) { look.bold = true; }},
            {"btnItalic", Qt::Key_Return, [](auto& look) { look.italic = true; }},
            {"btnUnderLine", 0, [](auto& look) { look.underLine = true; }},
            {"btnAlignCenter", 0, [](auto& look) { look.horAlignment = 4; }}, // as it was shown already
            {"btnAlignLeft", 0, [](auto& look) { look.horAlignment = 1; }},
            {"btnAlignRight", Qt::Key_Space, [](auto& look) { look.horAlignment = 2; }},
            {"comboBoxFontSize", Qt::Key_End, [](auto& look) { look.size = 18; }},
            {"comboBoxFontSize", Qt::Key_Home, [](auto& look) { look.size = 6; }},
            {"comboBoxFontFamily", Qt::Key_Home,
                [](auto& look) { look.family = QFontDatabase::families().constFirst(); }},
        };
        ZoDisplayViewTextSetting panel;
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        QSignalSpy changes(&panel, &ZoDisplayViewTextSetting::viewAttributeChanged);
        ZoDisplayViewAttribute wanted;
        wanted.reserved = 5;
        wanted.bold = true;
        wanted.family = QFontDatabase::families().constLast();
        panel.setViewAttribute(wanted);
        for (auto const& [control, key, edit] : edits) {
            auto* const widget = panel.findChild<QWidget*>(QString::fromLatin1(control));
            if (key) {
                widget->setFocus();
                QTest::keyClick(widget, static_cast<Qt::Key>(key));
            } else {
                QTest::mouseClick(widget, Qt::LeftButton);
            }
            edit(wanted);
            QVERIFY2(changes.size() == 1, control);
            QCOMPARE(changes.takeFirst().at(0).value<ZoDisplayViewAttribute>(), wanted);
            QCOMPARE(panel.getViewAttribute(), wanted);
        }
    }

    void shownWithoutEcho()
    {
        ZoDisplayViewTextSetting panel;
        auto* const sizes = panel.findChild<QComboBox*>(u"comboBoxFontSize"_s);
        auto* const families = panel.findChild<QComboBox*>(u"comboBoxFontFamily"_s);
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
        for (auto const* name : {"comboBoxFontFamily", "comboBoxFontSize", "btnBold", "btnItalic",
                 "btnUnderLine", "btnAlignCenter", "btnSelectColor", "btnClose", "comboBoxFontFamily"}) {
            QCOMPARE(panel.focusWidget()->objectName(), QString::fromLatin1(name));
            QTest::keyClick(panel.focusWidget(), Qt::Key_Tab);
        }
        QSignalSpy closing(&panel, &ZoDisplayViewTextSetting::aboutToClose);
        auto* const close = panel.findChild<QWidget*>(u"btnClose"_s);
        close->setFocus();
        QTest::keyClick(close, Qt::Key_Return);
        QTest::keyClick(close, Qt::Key_Escape);
        panel.close();
        QCOMPARE(closing.size(), 3);
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
            button->click();
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
        menu->popup({790, 790});
        QRect const opener(button->mapToGlobal(QPoint(0, 0)), button->size());
        QCOMPARE(menu->y() + menu->height(), opener.y());
        QVERIFY(qAbs(menu->geometry().center().x() - opener.center().x()) <= 1);
        QVERIFY(menu->windowFlags().testFlag(Qt::FramelessWindowHint));
    }
};

QTEST_MAIN(tst_TextLook)
#include "tst_TextLook.moc"
