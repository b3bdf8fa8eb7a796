#pragma once

#include <QStringList>

class ImagXpress;
class StillCapture;

/// Brings picture files from anywhere into the visit, each filed like a still.
class PictureImport
{
public:
    /// `carrier` is the hidden control through which each picture goes.
    PictureImport(ImagXpress& carrier, StillCapture& stills) : m_carrier(carrier), m_stills(stills) {}

    /// Asks for a file and imports it.
    void ImportPictureFile();
    /// Imports files one by one, by their native paths; one that can't be read keeps no other away.
    void ImportFiles(const QStringList& paths);

private:
    void ImportFile(const QString& path);

    ImagXpress& m_carrier;
    StillCapture& m_stills;
};
