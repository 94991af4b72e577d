/// IniSettings: the INI form in which the settings file is kept, as a QSettings format. Values
/// are kept as the plain text a person writes by hand, so that any INI reader reads the file
/// and a file written by hand reads back as it was written.
#pragma once

#include "core/TqExport.h"

#include <QSettings>

#include <memory>

class QIODevice;

/// The file is lines of "[section]" and "key=value". Keys outside a section, or in the
/// section "[General]", are the store's top-level keys; a key in "[Recent]" is "Recent/key"
/// in the store (empty parts between slashes and blanks around parts are dropped, as QSettings
/// drops them from the keys it is asked for; a key whose last part starts with ';', '#' or
/// '[' is left out, since it could not be written back). Blanks around section names, keys and
/// values are dropped; lines that start with ';' or '#' are comments; other lines without '=' are
/// ignored; of two equal keys in a section the first counts; keys whose section part is "General"
/// (such as "General/x") are left out, since the top level is written as that section. A value that
/// starts and ends with a double quote loses that pair of quotes, so that blanks at its ends can be
/// kept; every other character of a value is taken as it is (UTF-8). Commas and backslashes have no
/// special meaning, unlike Qt's own INI form, so "PrintSetup=file,,,portrait" is one text.
///
/// Written files hold the top-level keys (and any "General/x" as x) under "[General]", then
/// each section; a value with
/// blanks at its ends, or one that begins and ends with a double quote, is written inside
/// double quotes; line breaks in a value are written as blanks, since a line holds one value.
/// Booleans are written "true" and "false", numbers in decimal.
class TQ_EXPORT IniSettings {
public:
    /// The QSettings format of such files, registered on first use.
    static QSettings::Format format();
    /// A store on the file at path in this format; by value, the caller owns it.
    static std::unique_ptr<QSettings> open(const QString& path);

    ///@{
    /// The format's reader and writer, for QSettings and for tests: read() fills map from
    /// the device's text and always succeeds (malformed lines are ignored); write() writes
    /// map and fails only when the device does.
    static bool read(QIODevice& device, QSettings::SettingsMap& map);
    static bool write(QIODevice& device, const QSettings::SettingsMap& map);
    ///@}

    /// Text the store gives back for a key as a string: a string as it is, anything else in
    /// its written form. Empty for a missing key.
    static QString textOf(const QVariant& value);
    /// A boolean as the file may hold it: "true", "yes", "on" or a non-zero integer is true;
    /// "false", "no", "off" or 0 is false (any case); anything else gives defaultValue.
    static bool booleanOf(const QVariant& value, bool defaultValue);
};
