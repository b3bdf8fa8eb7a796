#pragma once

#include "contracts/ProfileFile.h"

/// Profile files in windows-949, read and written through the file service, each write as one whole file. A file that
/// is there but can't be read is never written over.
class PrivateProfile : public ProfileFile
{
public:
    QString GetPrivateProfileString(const QString& section, const QString& key, const QString& fallback, int size,
                                    const QString& path) const override;
    bool WritePrivateProfileString(const QString& section, const QString& key, const QString& value,
                                   const QString& path) override;
};

/// Installs the service of profile files.
void RegisterProfile();
