#include "editor/edit_settings.h"

#include "text/text_routines.h"
#include "visit/device_settings.h"

#include <limits>

using namespace Qt::StringLiterals;

namespace {
const QString ImageEditSetting = u"Image Edit Setting"_s;
/// What a key that isn't there reads as.
const QString Missing = u"0"_s;
constexpr int NameBytes = 30;
constexpr int ValueBytes = 10;
constexpr int LargestColour = 0xFFFFFF;

QString ReadValue(const QString& key)
{
    return ReadSetting(ImageEditSetting, key, ValueBytes);
}

bool IsYes(const QString& key)
{
    return ReadValue(key) == u"Y";
}

QString YesOrNo(bool on)
{
    return on ? u"Y"_s : u"N"_s;
}
} // namespace

EditSettings::EditSettings() : font(u"바탕"_s, 16) {}

EditSettings LoadEditSettings()
{
    EditSettings settings;
    const QString name = ReadSetting(ImageEditSetting, u"Font Name"_s, NameBytes);
    if (!name.isEmpty() && name != Missing)
        settings.font.setFamily(name);
    settings.font.setBold(IsYes(u"Font Bold"_s));
    const int size = WholeNumber(ReadValue(u"Font Size"_s));
    if (size > 0 && size <= std::numeric_limits<qint16>::max())
        settings.font.setPointSize(size);
    settings.font.setItalic(IsYes(u"Font Italic"_s));
    settings.font.setUnderline(IsYes(u"Font Underline"_s));
    settings.font.setStrikeOut(IsYes(u"Font Strikethrough"_s));
    const int colour = WholeNumber(ReadValue(u"Color"_s));
    if (colour > 0 && colour <= LargestColour)
        settings.colour = colour;
    return settings;
}

void SaveFontSettings(const QFont& font)
{
    WriteSetting(ImageEditSetting, u"Font Name"_s, font.family());
    WriteSetting(ImageEditSetting, u"Font Bold"_s, YesOrNo(font.bold()));
    WriteSetting(ImageEditSetting, u"Font Size"_s, QString::number(font.pointSizeF()));
    WriteSetting(ImageEditSetting, u"Font Italic"_s, YesOrNo(font.italic()));
    WriteSetting(ImageEditSetting, u"Font Underline"_s, YesOrNo(font.underline()));
    WriteSetting(ImageEditSetting, u"Font Strikethrough"_s, YesOrNo(font.strikeOut()));
}

void SaveColorSetting(int colour)
{
    WriteSetting(ImageEditSetting, u"Color"_s, QString::number(colour));
}
