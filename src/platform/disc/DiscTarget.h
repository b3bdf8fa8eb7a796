#pragma once

#include "contracts/cd.h"

#include <QString>
#include <QStringList>

class XorrisoRun;

/// A medium as it was found in the drive.
struct DiscMedium
{
    bool writable = false;
    bool holdsData = false; ///< It has to be blanked first.
    bool once = false;      ///< A write that is broken off spoils it.
    qint64 freeBytes = 0;   ///< After blanking, where that is needed.
    QString reason;         ///< Why it can't be written to, for the operator.
};

/// What is written to: a drive of the machine, or an image file in the place of one. An image appears under its name
/// when it is whole and checked, and never over one that holds something: then it gets a number behind its name.
class DiscTarget
{
public:
    /// `path` is a device file, or the image's path.
    DiscTarget(const QString& path, bool isImage) : m_path(path), m_isImage(isImage) {}

    bool IsImage() const { return m_isImage; }
    const QString& Path() const { return m_path; }
    /// What there is in the place of an image.
    DiscMedium ImageMedium() const;
    /// Commands that ask a drive, and what it told.
    QStringList LookCommands() const;
    static DiscMedium MediumOf(const XorrisoRun& run);

    /// Address for the writing program. Throws PlatformError.
    QString Begin();
    /// The same for reading back.
    QString Address() const;
    /// Brings a finished image under its name, which is given back; empty for a drive. Throws PlatformError.
    QString Keep();
    /// Takes away what there is of an image.
    void Discard();

private:
    QString m_path;
    bool m_isImage;
    QString m_partial;
};

/// The CD drives that can be written to: the image file when one is set, otherwise the drives of the machine, which
/// stand in the folder of devices, in the order of their numbers.
QList<DriveEntry> ListDiscDrives(const QString& image, const QString& devices);
