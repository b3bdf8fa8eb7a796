#pragma once

#include "platform/profile/IniFile.h"
#include "platform/setup/SetupFile.h"

#include <QSet>

/// Reads a setup's content. What can't be read or isn't allowed becomes one of the setup's problems.
class SetupReader
{
public:
    SetupReader(const QByteArray& content, const QString& folder)
        : m_ini(content, IniFile::EncodingOf(content)), m_folder(folder)
    {
    }

    SetupFile Read()
    {
        ReadDatabase();
        ReadClient();
        ReadPlaces();
        ReadDevices();
        ReadPacs();
        NoteUnread();
        return m_setup;
    }

private:
    void ReadDatabase();
    void ReadClient();
    void ReadSections(const QString& list);
    void ReadCaptureRoot(QString root);
    void ReadPlaces();
    void ReadDevices();
    void ReadPacs();
    void ReadIdentity();
    void ReadKinds();
    void ReadTls();
    void ReadObjects();
    void ReadWorklist();
    /// A server of its own section; none without a host.
    DicomPeer ReadPeer(const QString& section);
    void CheckHost(const QString& section, const QString& host);
    void NoteUnread();
    QString ApplicationTitle(const QString& section, const QString& key, const QString& title,
                             const QString& otherwise);

    /// Empty without the key.
    QString Text(const QString& section, const QString& key);
    /// 0 or 1; off where nothing is said.
    bool Switch(const QString& section, const QString& key);
    QString Needed(const QString& section, const QString& key);
    QString Absolute(const QString& path) const;

    IniFile m_ini;
    QString m_folder;
    QSet<QString> m_asked; ///< Sections and keys that have a meaning, as `NameOf` has them.
    SetupFile m_setup;
};

/// A port's number, 1 to 65535.
bool IsPort(const QString& text);
