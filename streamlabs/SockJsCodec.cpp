#include "streamlabs/SockJsCodec.h"

#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

QString SockJsCodec::encodeClientFrame(QJsonObject const& object)
{
    QByteArray const json = QJsonDocument(object).toJson(QJsonDocument::Compact);
    QByteArray frame;
    frame.reserve(json.size() + json.size() / 4 + 4);
    frame += R"([")";
    for (char const c : json) {
        switch (c) {
        case '\'':
            frame += R"(\\\")";
            break;
        case '"':
            frame += R"(\")";
            break;
        default:
            frame += c;
        }
    }
    frame += R"("])";
    return QString::fromUtf8(frame);
}

std::optional<QStringView> SockJsCodec::messageOf(QStringView frame)
{
    constexpr auto prefix = R"(a[")"_L1;
    constexpr auto suffix = R"("])"_L1;
    if (!frame.startsWith(prefix) || !frame.endsWith(suffix)) {
        return std::nullopt;
    }
    // In `a["]` one quote is both; there is nothing between.
    return frame.mid(prefix.size()).chopped(std::min(suffix.size(), frame.size() - prefix.size()));
}

// One pass instead of three. Once the `\n` pairs are out, all that matters of a text is how many backslashes
// stand before each quote: none or one leaves the bare quote, two leave `\"`, and from three on the last
// three and the quote become an apostrophe.
QString SockJsCodec::unescape(QStringView inner)
{
    QString out(inner.size(), Qt::Uninitialized);
    QChar* write = out.data();
    qsizetype backslashes = 0;   // read but not yet written
    bool afterBackslash = false; // the character just read was one of them
    QChar const* read = inner.begin();
    QChar const* const end = inner.end();
    auto const flush = [&] {
        write = std::fill_n(write, backslashes, u'\\');
        backslashes = 0;
    };

    while (read != end) {
        QChar const c = *read++;
        if (c == u'\\') {
            ++backslashes;
            afterBackslash = true;
            continue;
        }
        if (c == u'n' && afterBackslash) {
            --backslashes;
        } else if (c == u'"' && backslashes > 0) {
            bool const apostrophe = backslashes >= 3;
            backslashes -= apostrophe ? 3 : 1;
            flush();
            *write++ = apostrophe ? u'\'' : u'"';
        } else {
            flush();
            *write++ = c;
        }
        afterBackslash = false;
    }
    flush();
    out.truncate(write - out.constData());
    return out;
}
