#include "settings/IniSettings.h"

#include <gtest/gtest.h>

#include <QBuffer>

namespace {

QSettings::SettingsMap readText(const char* text) {
    QByteArray bytes(text);
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QSettings::SettingsMap map;
    EXPECT_TRUE(IniSettings::read(buffer, map));
    return map;
}

QByteArray writeMap(const QSettings::SettingsMap& map) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(IniSettings::write(buffer, map));
    return bytes;
}

TEST(IniSettings, ReadTakesHandWrittenLinesAsText) {
    const QSettings::SettingsMap map = readText("TopKey = before any section\n"
                                                "; a comment\n"
                                                "# another comment\n"
                                                "[General]\n"
                                                "PrintSetup=file,,,portrait,clipboard\n"
                                                "EditorCommandLine=vim \"%FILE%\"\r\n"
                                                "Padded=\"  kept  \"\n"
                                                "Path=C:\\tools\\x.exe\n"
                                                "no equals sign here\n"
                                                "=no key\n"
                                                "Empty=\n"
                                                "[ Recent ]\n"
                                                "File00=/a/b.tqd\n"
                                                "File00=/second/ignored\n"
                                                "Umlaut=\xC3\xA4\n"
                                                "[a/ /]\n"
                                                " b / c =slashes\n"
                                                "x/;y=comment-like\n"
                                                "[general]\n"
                                                "General/z=not kept\n");
    // clang-format off
    const struct { const char* key; const char* value; } expected[] = {
        {"TopKey", "before any section"},
        {"PrintSetup", "file,,,portrait,clipboard"},
        {"EditorCommandLine", "vim \"%FILE%\""},
        {"Padded", "  kept  "},
        {"Path", "C:\\tools\\x.exe"},
        {"Empty", ""},
        {"Recent/File00", "/a/b.tqd"},
        {"Recent/Umlaut", "\xC3\xA4"},
        {"a/b/c", "slashes"},
    };
    // clang-format on
    EXPECT_EQ(map.size(), std::size(expected));
    for (const auto& row : expected)
        EXPECT_EQ(map.value(QString::fromUtf8(row.key)).toString(), QString::fromUtf8(row.value))
            << row.key;
}

TEST(IniSettings, WriteThenReadGivesBackEveryValue) {
    QSettings::SettingsMap map;
    map.insert("Commas", QString("a,b,,c"));
    map.insert("Quotes", QString("\"%FILE%\""));
    map.insert("Blanks", QString("  x "));
    map.insert("Backslash", QString("C:\\a\\b"));
    map.insert("Flag", true);
    map.insert("Number", 42);
    map.insert("Group/Key", QString("in a group"));
    const QByteArray text = writeMap(map);
    EXPECT_TRUE(text.startsWith("[General]\n")) << text.toStdString();
    EXPECT_TRUE(text.contains("\n[Group]\nKey=in a group\n")) << text.toStdString();
    EXPECT_TRUE(text.contains("\nCommas=a,b,,c\n")) << text.toStdString();

    QByteArray bytes = text;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QSettings::SettingsMap back;
    ASSERT_TRUE(IniSettings::read(buffer, back));
    ASSERT_EQ(back.size(), map.size());
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
        EXPECT_EQ(back.value(entry.key()).toString(), IniSettings::textOf(entry.value()))
            << entry.key().toStdString();
}

TEST(IniSettings, WriteKeepsOneLinePerKeyAndOneTopSection) {
    QSettings::SettingsMap map;
    map.insert("Text", QString("one\r\ntwo\nthree"));
    map.insert("General/Moved", QString("to the top level"));
    EXPECT_EQ(writeMap(map), QByteArray("[General]\nMoved=to the top level\nText=one two three\n"));
}

TEST(IniSettings, BooleanOfReadsTheWordsPeopleWrite) {
    // clang-format off
    const struct { const char* text; bool defaultValue; bool expected; } rows[] = {
        {"true", false, true}, {"YES", false, true}, {"on", false, true}, {"1", false, true},
        {"-2", false, true},   {"false", true, false}, {"No", true, false}, {"off", true, false},
        {"0", true, false},    {"maybe", true, true},  {"maybe", false, false}, {"", true, true},
    };
    // clang-format on
    for (const auto& row : rows)
        EXPECT_EQ(IniSettings::booleanOf(QString(row.text), row.defaultValue), row.expected)
            << row.text;
    EXPECT_TRUE(IniSettings::booleanOf(QVariant(true), false));
}

} // namespace
