#include "uikit/KitStyle.h"

#include <QFile>
#include <QHash>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

QHash<QString, QString> readSections()
{
    QFile file(u":/Streamlabs/kit.qss"_s);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QString text = QString::fromUtf8(file.readAll());
    static QRegularExpression const definition(u"^@(\\w+): (.+);$"_s, QRegularExpression::MultilineOption);
    for (auto const& found : definition.globalMatch(text)) {
        text.replace(QRegularExpression(u"@%1\\b"_s.arg(found.captured(1))), found.captured(2));
    }
    QHash<QString, QString> sections;
    for (QString const& part : text.split(u"\n/*** "_s).sliced(1)) {
        sections.insert(part.section(u" ***/"_s, 0, 0), part.section(u" ***/"_s, 1));
    }
    return sections;
}

} // namespace

QString KitStyle::sheet(QString const& section)
{
    static QHash<QString, QString> const sections = readSections();
    // A name without a section is no style sheet: Qt warns of it.
    return sections.value(section, section);
}
