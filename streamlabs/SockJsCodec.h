#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringView>

#include <optional>

//! The text forms of the SockJS frames that carry one JSON object, as this package writes and reads them.
//!
//! SockJS (sockjs-protocol 0.3.3) wraps messages as a JSON array of strings, `["…"]` from the client and
//! `a["…"]` from the server. The strings are escaped and unescaped here by hand, and not quite as JSON has
//! it; Streamlabs Desktop and the packages in the field depend on the outcome byte for byte, so it stays as
//! it is.
namespace SockJsCodec {

//! The client frame for \a object: compact JSON, in which each apostrophe leaves as `\\\"` and each double
//! quote as `\"`. Backslashes are not doubled.
QString encodeClientFrame(QJsonObject const& object);

//! The inner text of a server frame that holds one message; nothing for any other (`o`, `h`, `c[…]`, …).
std::optional<QStringView> messageOf(QStringView frame);

//! Takes the escapes off an inner text. The outcome is that of three passes: drop every `\n` (backslash, n),
//! turn every `\"` into `"`, then every `\\"` into `'`. All other escapes stay for the JSON parser.
QString unescape(QStringView inner);

} // namespace SockJsCodec
