#include "settings/IniSettings.h"

#include <QIODevice>
#include <QMap>
#include <QStringList>

namespace {

const QString generalSection = QStringLiteral("General");

bool isQuoted(const QString& text) {
    return text.size() >= 2 && text.startsWith(QLatin1Char('"')) && text.endsWith(QLatin1Char('"'));
}

QString valueText(const QVariant& value) {
    QString text = IniSettings::textOf(value);
    text.replace(QLatin1String("\r\n"), QLatin1String(" "));
    text.replace(QLatin1Char('\r'), QLatin1Char(' '));
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    const bool blankEnds = !text.isEmpty() && (text.front().isSpace() || text.back().isSpace());
    if (blankEnds || isQuoted(text))
        return QLatin1Char('"') + text + QLatin1Char('"');
    return text;
}

// The key as QSettings asks for it, with no empty parts and no blanks around a part; empty
// when the last part could not be written as a line of its own (it would read as a comment
// or a section).
QString normalisedKey(const QString& key) {
    QStringList parts;
    for (const QString& part : key.split(QLatin1Char('/')))
        if (const QString trimmed = part.trimmed(); !trimmed.isEmpty())
            parts.append(trimmed);
    if (parts.isEmpty() || parts.back().startsWith(QLatin1Char(';')) ||
        parts.back().startsWith(QLatin1Char('#')) || parts.back().startsWith(QLatin1Char('[')))
        return QString();
    return parts.join(QLatin1Char('/'));
}

} // namespace

QSettings::Format IniSettings::format() {
    static const QSettings::Format registered =
        QSettings::registerFormat(QStringLiteral("ini"), &IniSettings::read, &IniSettings::write);
    return registered;
}

std::unique_ptr<QSettings> IniSettings::open(const QString& path) {
    return std::make_unique<QSettings>(path, format());
}

bool IniSettings::read(QIODevice& device, QSettings::SettingsMap& map) {
    const QString text = QString::fromUtf8(device.readAll());
    QString section;
    for (const QString& rawLine : text.split(QLatin1Char('\n'))) {
        const QString line = rawLine.trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char(';')) ||
            line.startsWith(QLatin1Char('#')))
            continue;
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            section = line.mid(1, line.size() - 2).trimmed();
            if (section.compare(generalSection, Qt::CaseInsensitive) == 0)
                section.clear();
            continue;
        }
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals <= 0)
            continue;
        const QString key = line.left(equals);
        QString value = line.mid(equals + 1).trimmed();
        if (isQuoted(value))
            value = value.mid(1, value.size() - 2);
        const QString fullKey = normalisedKey(section + QLatin1Char('/') + key);
        if (fullKey.isEmpty())
            continue;
        // "General/x" would be written back as the top-level key x.
        const qsizetype slash = fullKey.lastIndexOf(QLatin1Char('/'));
        if (slash >= 0 && fullKey.left(slash).compare(generalSection, Qt::CaseInsensitive) == 0)
            continue;
        if (!map.contains(fullKey))
            map.insert(fullKey, value);
    }
    return true;
}

bool IniSettings::write(QIODevice& device, const QSettings::SettingsMap& map) {
    // Keys as the store names them: "Section/Key", top-level keys without a section.
    QMap<QString, QStringList> sections;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        const qsizetype slash = entry.key().lastIndexOf(QLatin1Char('/'));
        QString section = slash < 0 ? QString() : entry.key().left(slash);
        if (section.compare(generalSection, Qt::CaseInsensitive) == 0)
            section.clear();
        const QString key = slash < 0 ? entry.key() : entry.key().mid(slash + 1);
        sections[section].append(key + QLatin1Char('=') + valueText(entry.value()));
    }
    QString text;
    bool first = true;
    for (auto section = sections.cbegin(); section != sections.cend(); ++section) {
        if (!first)
            text += QLatin1Char('\n');
        first = false;
        text += QLatin1Char('[') + (section.key().isEmpty() ? generalSection : section.key()) +
                QLatin1String("]\n");
        for (const QString& line : section.value())
            text += line + QLatin1Char('\n');
    }
    const QByteArray bytes = text.toUtf8();
    return device.write(bytes) == bytes.size();
}

QString IniSettings::textOf(const QVariant& value) {
    if (!value.isValid())
        return QString();
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList().join(QLatin1Char(','));
    return value.toString();
}

bool IniSettings::booleanOf(const QVariant& value, bool defaultValue) {
    const QString text = textOf(value).trimmed().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("yes") ||
        text == QLatin1String("on"))
        return true;
    if (text == QLatin1String("false") || text == QLatin1String("no") ||
        text == QLatin1String("off"))
        return false;
    bool isNumber = false;
    const long long number = text.toLongLong(&isNumber);
    return isNumber ? number != 0 : defaultValue;
}
