// The codec beside its plain description. The input is what a server frame holds, or, behind a ">", a word of
// a request.

#include "fuzz/Fuzz.h"
#include "streamlabs/SockJsCodec.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {

QString unescapedInThreePasses(QString text)
{
    return text.remove(uR"(\n)"_s).replace(uR"(\")"_s, u"\""_s).replace(uR"(\\")"_s, u"'"_s);
}

QString encodedPlainly(QJsonObject const& object)
{
    auto const json = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    return uR"([")"_s + QString(json).replace(u"\""_s, uR"(\")"_s).replace(u"'"_s, uR"(\\\")"_s) + uR"("])"_s;
}

void decode(QString const& text)
{
    if (auto const inner = SockJsCodec::messageOf(text)) {
        Fuzz::require(text.contains(*inner), "a message is part of its frame");
    }
    QString const frame = uR"(a[")"_s + text + uR"("])"_s;
    auto const inner = SockJsCodec::messageOf(frame);
    Fuzz::require(inner && *inner == text, "a message is what stands between");
    Fuzz::require(
        SockJsCodec::unescape(text) == unescapedInThreePasses(text), "one pass does what three did");
}

void encode(QString const& word)
{
    QJsonObject const request{{u"id"_s, 1}, {u"method"_s, word}};
    Fuzz::require(SockJsCodec::encodeClientFrame(request) == encodedPlainly(request),
        "a request is escaped as described");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    auto const input = Fuzz::bytes(data, size);
    if (input.startsWith('>')) {
        encode(QString::fromUtf8(input.sliced(1)));
    } else {
        decode(QString::fromLatin1(input));
    }
    return 0;
}
