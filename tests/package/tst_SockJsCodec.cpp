#include "streamlabs/SockJsCodec.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// What other programs depend on, step by step and as slow as that is.
QString unescapeInSteps(QString text)
{
    text.remove(uR"(\n)"_s);
    text.replace(uR"(\")"_s, u"\""_s);
    text.replace(uR"(\\")"_s, u"'"_s);
    return text;
}

QString encodeInSteps(QJsonObject const& object)
{
    QByteArray bytes = QJsonDocument(object).toJson(QJsonDocument::Compact);
    bytes.replace("'", R"(\\")");
    bytes.replace("\"", R"(\")");
    return uR"(["%1"])"_s.arg(QString::fromUtf8(bytes));
}

} // namespace

class tst_SockJsCodec : public QObject
{
    Q_OBJECT

private slots:
    void unescapesAsTheStepsDo();
    void encodesAsTheStepsDo();
    void findsTheMessage_data();
    void findsTheMessage();
};

// Every text of up to eight characters over those that matter, and long random ones.
void tst_SockJsCodec::unescapesAsTheStepsDo()
{
    constexpr char16_t kAlphabet[] = {u'\\', u'"', u'n', u'\'', u'x'};
    constexpr int kLetters = std::size(kAlphabet);
    auto const compare = [](QString const& text) {
        QString const expected = unescapeInSteps(text);
        QString const got = SockJsCodec::unescape(text);
        if (got != expected) {
            qInfo() << "for" << text;
        }
        QCOMPARE(got, expected);
    };

    for (int length = 0, texts = 1; length <= 8; ++length, texts *= kLetters) {
        for (int number = 0; number < texts; ++number) {
            QString text;
            for (int i = 0, rest = number; i < length; ++i, rest /= kLetters) {
                text += QChar(kAlphabet[rest % kLetters]);
            }
            compare(text);
            if (QTest::currentTestFailed()) {
                return;
            }
        }
    }

    QRandomGenerator random(1);
    QString const wide = u"\\\\\\\\\"\"\"nnt'ä字\u2028{}[]:, \t\n"_s + QString::fromUcs4(U"😀") +
                         QChar(0xd800) + QChar(0xdc00) + QChar(0);
    for (int round = 0; round < 2000; ++round) {
        QString text;
        for (quint32 i = random.bounded(2000U); i > 0; --i) {
            text += wide.at(random.bounded(wide.size()));
        }
        compare(text);
        if (QTest::currentTestFailed()) {
            return;
        }
    }
}

void tst_SockJsCodec::encodesAsTheStepsDo()
{
    QRandomGenerator random(2);
    QString const letters = uR"('"\/ {}[]n%1ä字)"_s + QString::fromUcs4(U"😀") + QChar(7);
    for (int round = 0; round < 2000; ++round) {
        QString text;
        for (quint32 i = random.bounded(60U); i > 0; --i) {
            text += letters.at(random.bounded(letters.size()));
        }
        QJsonObject const object{{text, text}, {u"n"_s, round}};
        QCOMPARE(SockJsCodec::encodeClientFrame(object), encodeInSteps(object));
    }
    QCOMPARE(SockJsCodec::encodeClientFrame({{u"a"_s, u"it's"_s}}), uR"(["{\"a\":\"it\\\"s\"}"])"_s);
}

void tst_SockJsCodec::findsTheMessage_data()
{
    QTest::addColumn<QString>("frame");
    QTest::addColumn<bool>("isMessage");
    QTest::addColumn<QString>("inner");

    QTest::newRow("open") << u"o"_s << false << QString();
    QTest::newRow("heartbeat") << u"h"_s << false << QString();
    QTest::newRow("close") << uR"(c[3000,"Go away!"])"_s << false << QString();
    QTest::newRow("empty") << QString() << false << QString();
    QTest::newRow("message") << uR"(a["{}"])"_s << true << u"{}"_s;
    QTest::newRow("empty message") << uR"(a[""])"_s << true << QString();
    QTest::newRow("one quote for both ends") << uR"(a["])"_s << true << QString();
    QTest::newRow("cut") << uR"(a["{\"id\":1)"_s << false << QString();
    QTest::newRow("cut before the bracket") << uR"(a["{}")"_s << false << QString();
    QTest::newRow("upper case") << uR"(A["{}"])"_s << false << QString();
    QTest::newRow("no string") << u"a[1]"_s << false << QString();
    QTest::newRow("two messages") << uR"(a["1","2"])"_s << true << uR"(1","2)"_s;
}

void tst_SockJsCodec::findsTheMessage()
{
    QFETCH(QString, frame);
    QFETCH(bool, isMessage);
    QFETCH(QString, inner);

    auto const message = SockJsCodec::messageOf(frame);
    QCOMPARE(message.has_value(), isMessage);
    QCOMPARE(message.value_or(QStringView()).toString(), inner);
}

QTEST_APPLESS_MAIN(tst_SockJsCodec)
#include "tst_SockJsCodec.moc"
