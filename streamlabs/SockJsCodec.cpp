#include "streamlabs/SockJsCodec.h"

#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

QString SockJsCodec::encodeClientFrame(QJsonObject const& object)
{
    QByteArray const json = QJsonDocument(object).toJson(QJsonDocument::Compact);
    constexpr auto kPrefix = R"([")"_L1;
    constexpr auto kSuffix = R"("])"_L1;
    constexpr auto kQuote = R"(\")"_L1;
    constexpr auto kApostrophe = R"(\\\")"_L1;

    QByteArray frame(kPrefix.size() + json.size() * kApostrophe.size() + kSuffix.size(), Qt::Uninitialized);
    char* write = std::ranges::copy(kPrefix, frame.data()).out;
    for (char const c : json) {
        if (c == '"') {
            write = std::ranges::copy(kQuote, write).out;
        } else if (c == '\'') {
            write = std::ranges::copy(kApostrophe, write).out;
        } else {
            *write++ = c;
        }
    }
    write = std::ranges::copy(kSuffix, write).out;
    return QString::fromUtf8(frame.constData(), write - frame.constData());
}

std::optional<QStringView> SockJsCodec::messageOf(QStringView frame)
{
    constexpr auto kPrefix = R"(a[")"_L1;
    constexpr auto kSuffix = R"("])"_L1;
    if (!frame.startsWith(kPrefix) || !frame.endsWith(kSuffix)) {
        return std::nullopt;
    }
    // In `a["]` one quote is both; there is nothing between.
    return frame.mid(kPrefix.size()).chopped(std::min(kSuffix.size(), frame.size() - kPrefix.size()));
}

// One pass instead of three. Once the `\n` pairs are out, all that matters of a text is how many backslashes
// stand before each quote: none or one leaves the bare quote, two leave `\"`, and from three on the last
// three and the quote become an apostrophe.
QString SockJsCodec::unescape(QStringView inner)
{
    QString out(inner.size(), Qt::Uninitialized);
    QChar* write = out.data();
    QChar const* read = inner.begin();
    QChar const* const end = inner.end();

    while (read != end) {
        if (*read != u'\\') { // most of any text
            *write++ = *read++;
            continue;
        }
        if (end - read > 1 && read[1] == u'"') { // most of the escapes
            *write++ = u'"';
            read += 2;
            continue;
        }
        qsizetype backslashes = 0;
        while (read != end && *read == u'\\') {
            ++backslashes;
            ++read;
            if (read != end && *read == u'n') {
                --backslashes; // what was before the pair and what comes behind it now stand together
                ++read;
            }
        }
        if (read != end && *read == u'"' && backslashes > 0) {
            bool const apostrophe = backslashes >= 3;
            write = std::fill_n(write, backslashes - (apostrophe ? 3 : 1), u'\\');
            *write++ = apostrophe ? u'\'' : u'"';
            ++read;
        } else {
            write = std::fill_n(write, backslashes, u'\\');
        }
    }
    out.truncate(write - out.constData());
    return out;
}
