// Changes inputs that are lines of JSON, or of a letter and JSON, so that they stay such lines most of the
// time. libFuzzer's own mutations of bytes alone hardly get past a parser.

#include "fuzz/Fuzz.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>
#include <cstring>
#include <random>

using namespace Qt::StringLiterals;

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

//! The words of the target's dictionary, to be keys and values.
QStringList words;

class Mutation
{
public:
    explicit Mutation(unsigned seed) : generator(seed) {}

    qsizetype below(qsizetype count)
    {
        return static_cast<qsizetype>(generator() % static_cast<std::uint64_t>(count));
    }

    void change(QByteArrayList& lines)
    {
        qsizetype const at = below(lines.size());
        switch (below(8)) {
        case 0:
            lines.insert(at, lines.at(below(lines.size())));
            break;
        case 1:
            lines.removeAt(at);
            break;
        case 2:
            lines.swapItemsAt(at, below(lines.size()));
            break;
        case 3:
            lines[at] = changedBytes(lines.at(at));
            break;
        default:
            lines[at] = changedLine(lines.at(at), lines.at(below(lines.size())));
        }
    }

private:
    static QByteArray changedBytes(QByteArray bytes)
    {
        qsizetype const size = bytes.size();
        bytes.resize(size + 64);
        bytes.truncate(static_cast<qsizetype>(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(bytes.data()),
            static_cast<std::size_t>(size), static_cast<std::size_t>(bytes.size()))));
        return bytes.replace('\n', ' ');
    }

    //! The value that \a line ends with.
    static QJsonValue parsed(QByteArray const& line)
    {
        auto const document = QJsonDocument::fromJson(line.sliced(startOf(line)));
        return document.isObject()  ? QJsonValue(document.object())
               : document.isArray() ? QJsonValue(document.array())
                                    : QJsonValue(QJsonValue::Undefined);
    }
    static qsizetype startOf(QByteArray const& line)
    {
        return std::ranges::find_if(line, [](char c) { return c == '{' || c == '['; }) - line.begin();
    }

    QByteArray changedLine(QByteArray const& line, QByteArray const& donor)
    {
        QJsonValue const value = parsed(line);
        if (value.isUndefined()) {
            return changedBytes(line);
        }
        seen = {};
        collect(parsed(donor));
        qsizetype const others = seen.size();
        collect(value);
        qsizetype left = below(seen.size() - others);
        QJsonArray const wrapped{changed(value, left)}; // for not every value can be a document
        QByteArray const text = QJsonDocument(wrapped).toJson(QJsonDocument::Compact);
        return line.first(startOf(line)) + text.sliced(1).chopped(1);
    }

    void collect(QJsonValue const& value)
    {
        if (!value.isUndefined()) {
            seen.append(value);
        }
        for (auto const& member : value.toObject()) {
            collect(member);
        }
        for (auto const& element : value.toArray()) {
            collect(element);
        }
    }

    //! \a value with its node number \a left changed, in the order of `collect`.
    QJsonValue changed(QJsonValue const& value, qsizetype& left)
    {
        if (left-- == 0) {
            return changedNode(value);
        }
        if (value.isObject()) {
            QJsonObject object = value.toObject();
            for (auto member = object.begin(); member != object.end() && left >= 0; ++member) {
                member.value() = changed(member.value(), left);
            }
            return object;
        }
        QJsonArray array = value.toArray();
        for (qsizetype i = 0; i < array.size() && left >= 0; ++i) {
            array[i] = changed(array.at(i), left);
        }
        return value.isArray() ? QJsonValue(array) : value;
    }

    QJsonValue changedNode(QJsonValue const& value)
    {
        bool const shrinks = below(3) == 0;
        if (QJsonObject object = value.toObject(); value.isObject() && below(4) != 0) {
            if (shrinks && !object.isEmpty()) {
                object.erase(object.begin() + below(object.size()));
            } else {
                object.insert(word(), anything());
            }
            return object;
        }
        if (QJsonArray array = value.toArray(); value.isArray() && below(4) != 0) {
            if (shrinks && !array.isEmpty()) {
                array.removeAt(below(array.size()));
            } else {
                array.insert(below(array.size() + 1), anything()); // which may be one that is there
            }
            return array;
        }
        if (value.isString() && shrinks) {
            return QString::fromUtf8(changedBytes(value.toString().toUtf8()));
        }
        return value.isDouble() && shrinks ? value.toDouble() + static_cast<double>(below(5) - 2)
                                           : anything();
    }

    QJsonValue anything()
    {
        static QJsonArray const plain{QJsonValue::Null, true, false, 0, 1, -1, 0.5, 1e300, 2147483647,
            2147483648.0, QString(), QJsonArray(), QJsonObject()};
        switch (below(3)) {
        case 0:
            return seen.at(below(seen.size()));
        case 1:
            return word();
        default:
            return plain.at(below(plain.size()));
        }
    }

    QString word() { return words.isEmpty() ? QString() : words.at(below(words.size())); }

    std::mt19937_64 generator;
    //! All values of two lines.
    QJsonArray seen;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    for (int i = 1; i < *argc; ++i) {
        QByteArray const argument((*argv)[i]);
        QFile dictionary(QString::fromLocal8Bit(argument.mid(6)));
        if (!argument.startsWith("-dict=") || !dictionary.open(QIODevice::ReadOnly)) {
            continue;
        }
        for (auto const& line : dictionary.readAll().split('\n')) {
            if (line.startsWith('"')) {
                words.append(QString::fromUtf8(line.sliced(1).chopped(1)));
            }
        }
    }
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(
    std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed)
{
    Mutation mutation(seed);
    if (mutation.below(8) == 0) {
        return LLVMFuzzerMutate(data, size, maxSize); // which also crosses two inputs
    }
    auto lines = Fuzz::bytes(data, size).toByteArray().split('\n');
    for (auto changes = mutation.below(3); changes >= 0 && !lines.isEmpty(); --changes) {
        mutation.change(lines);
    }
    auto const changed = lines.join('\n');
    if (static_cast<std::size_t>(changed.size()) > maxSize) {
        return LLVMFuzzerMutate(data, size, maxSize);
    }
    std::memcpy(data, changed.constData(), static_cast<std::size_t>(changed.size()));
    return static_cast<std::size_t>(changed.size());
}
