#pragma once

#include <QByteArray>
#include <QString>

/// Private profile files of the INI kind, text in the local code page (windows-949). Section names and keys are
/// matched without regard to case.
class ProfileFile
{
public:
    virtual ~ProfileFile() = default;

    /// Value of a key as a buffer of `size` bytes receives it: at most `size` - 1 bytes of the value, never half a
    /// character, with blanks and one pair of quotes around the value taken off. `fallback` when the file, the section
    /// or the key is missing.
    virtual QString GetPrivateProfileString(const QString& section, const QString& key, const QString& fallback,
                                            int size, const QString& path) const = 0;
    /// Writes one key; the rest of the file stays as it is. False when the file can't be written.
    virtual bool WritePrivateProfileString(const QString& section, const QString& key, const QString& value,
                                           const QString& path) = 0;
};
