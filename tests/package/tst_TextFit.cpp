// The texts of every language fit their places in every panel and dialog.

#include "actions/SlobsAudioPropertyView.h"
#include "actions/SlobsScenePropertyView.h"
#include "actions/SlobsSourcePropertyView.h"
#include "actions/SlobsStreamPropertyView.h"
#include "uikit/BaseKnobPropertyWidget.h"
#include "uikit/BasePropertyWidget.h"
#include "uikit/DialogIconBuilder.h"
#include "uikit/DialogIconEditMenu.h"
#include "uikit/ZoBaseHotkeyWidget.h"
#include "uikit/ZoDisplayViewTextSetting.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QTest>
#include <QTranslator>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;
using Make = std::function<std::unique_ptr<QWidget>()>;

namespace {

template <typename Widget>
std::unique_ptr<QWidget> make()
{
    return std::make_unique<Widget>();
}

//! Not linked: the longest text of the login pane. Linked: a target is chosen that is not there.
template <typename Panel, bool isLinked>
std::unique_ptr<QWidget> make()
{
    auto panel = std::make_unique<Panel>();
    panel->onStreamlabsStateChanged(isLinked, u"token"_s, 1);
    QJsonObject const gone{
        {u"scene_id"_s, u"gone"_s}, {u"scene_item_id"_s, u"gone"_s}, {u"audio_source_id"_s, u"gone"_s}};
    panel->onWidgetMessageReceived({{u"task"_s, u"getWidgetSettings"_s}, {u"payload"_s, gone}});
    return panel;
}

QSize needed(QWidget& widget, QString const& text, int width)
{
    auto const* const label = qobject_cast<QLabel*>(&widget);
    int const flags = label && label->wordWrap() ? Qt::TextWordWrap : Qt::TextSingleLine;
    return widget.fontMetrics().boundingRect(QRect(0, 0, width, 0), flags, text).size();
}

//! What of \a widget is shown, and where; nothing of one that shows no text.
QStringList textsOf(QWidget& widget, QRect& place)
{
    QStringList texts;
    if (auto const* const label = qobject_cast<QLabel*>(&widget)) {
        place = label->contentsRect();
        texts.append(label->text());
    } else if (auto const* const button = qobject_cast<QAbstractButton*>(&widget)) {
        QStyleOptionButton option;
        option.initFrom(button);
        place = button->style()->subElementRect(QStyle::SE_PushButtonContents, &option, button);
        texts.append(button->text());
    } else if (auto* const box = qobject_cast<QComboBox*>(&widget)) {
        QStyleOptionComboBox option;
        option.initFrom(box);
        place = box->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box);
        for (int i = 0; i < box->count(); ++i) {
            texts.append(box->itemText(i));
        }
    }
    texts.removeAll(QString());
    return texts;
}

} // namespace

class tst_TextFit : public QObject
{
    Q_OBJECT

private slots:
    void fits_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<Make>("make");
        QList<std::pair<char const*, Make>> const widgets{
            {"frame", make<BasePropertyWidget>},
            {"knob", make<BaseKnobPropertyWidget>},
            {"text look", make<ZoDisplayViewTextSetting>},
            {"icon source",
                [] {
                    auto menu = std::make_unique<DialogIconEditMenu>();
                    menu->offerReset();
                    return menu;
                }},
            {"icon builder without a folder to write to",
                [] {
                    auto builder = std::make_unique<DialogIconBuilder>();
                    builder->setImagePath(u":/Streamlabs/images/slobs_stream_off.png"_s);
                    return builder;
                }},
            {"stream", make<SlobsStreamPropertyView, false>},
            {"scene", make<SlobsScenePropertyView, false>},
            {"scene gone", make<SlobsScenePropertyView, true>},
            {"source", make<SlobsSourcePropertyView, false>},
            {"source gone", make<SlobsSourcePropertyView, true>},
            {"audio", make<SlobsAudioPropertyView, false>},
            {"audio gone", make<SlobsAudioPropertyView, true>},
        };
        for (char const* language : {"de_DE", "en_US", "ja_JP", "ko_KR", "zh_CN", "zh_TW"}) {
            for (auto const& [name, made] : widgets) {
                QTest::addRow("%s, %s", language, name) << QString::fromLatin1(language) << made;
            }
        }
    }

    void fits()
    {
        QFETCH(QString, language);
        QFETCH(Make, make);
        QTranslator translator;
        QVERIFY(translator.load(u":/Streamlabs/language_%1.qm"_s.arg(language)));
        QCoreApplication::installTranslator(&translator);

        auto const top = make();
        top->show();
        int checked = 0;
        for (QWidget* widget : top->findChildren<QWidget*>()) {
            // The families of fonts that there happen to be are no texts of ours.
            if (!widget->isVisible() || widget->objectName() == "comboBoxFontFamily"_L1) {
                continue;
            }
            widget->ensurePolished();
            QRect place;
            for (QString const& text : textsOf(*widget, place)) {
                ++checked;
                QSize const size = needed(*widget, text, place.width());
                QString needs;
                QDebug(&needs) << widget->objectName() << "needs" << size << "of" << place << text;
                QVERIFY2(size.width() <= place.width() && size.height() <= place.height(), qPrintable(needs));
                QVERIFY2(!text.startsWith(u"LAB_"_s), qPrintable(text));
            }
        }
        QVERIFY(checked > 0);
    }

    void narrowsTitlesOfKeys()
    {
        ZoBaseHotkeyWidget face;
        face.ensurePolished(); // as when it is shown
        auto const* const label = face.findChild<QLabel*>(u"lblTitle"_s);
        auto const width = [&](QString const& text) { return label->fontMetrics().horizontalAdvance(text); };
        QFont unstretched = label->font();
        unstretched.setStretch(QFont::Unstretched);
        int const wide = QFontMetrics(unstretched).horizontalAdvance(u"Mute"_s);
        for (auto const& [title, isNarrow, fits] :
            {std::tuple(u"Mute"_s, false, true), {u"Stop Stream WM"_s, true, true},
                {QString(60, u'W'), true, false}, {QString(), false, true}}) {
            face.setIconTitle(u"WWWWWWWWWWWW"_s);
            face.setIconTitle(title);
            QCOMPARE(width(title) <= label->width(), fits);
            QCOMPARE(label->font().pixelSize(), 26);
            face.setIconTitle(u"Mute"_s); // Narrow letters do not stay for a title that needs none.
            QCOMPARE(width(u"Mute"_s), wide);
            face.setIconTitle(title);
            QCOMPARE(width(u"Mute"_s) < wide, isNarrow);
        }
    }
};

QTEST_MAIN(tst_TextFit)
#include "tst_TextFit.moc"
