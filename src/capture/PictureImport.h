#pragma once

#include "frame/WorkThread.h"

#include <QStringList>

#include <exception>
#include <memory>

class ImagXpress;
class StillCapture;
struct ForeignPicture;

/// Brings picture files from anywhere into the visit, each filed like a still.
class PictureImport
{
public:
    /// `carrier` is the hidden control through which each picture goes.
    PictureImport(ImagXpress& carrier, StillCapture& stills) : m_carrier(carrier), m_stills(stills) {}

    /// Asks for files and imports them.
    void ImportPictureFile();
    /// Imports files, by their native paths. Several go one by one in the order of their names, into the visit as it
    /// is now, while events are served: one that can't be read keeps no other away, the operator can give up what is
    /// left, and is told at the end what became of them.
    void ImportFiles(QStringList paths);

private:
    struct Several;
    using SeveralPointer = std::shared_ptr<Several>;

    void ImportFile(const QString& path);
    void ImportSeveral(const QStringList& paths);
    void ReadNext(const SeveralPointer& files);
    void TakeRead(const SeveralPointer& files, const ForeignPicture& read, const std::exception_ptr& fault);
    void File(const SeveralPointer& files, const ForeignPicture& read);

    ImagXpress& m_carrier;
    StillCapture& m_stills;
    WorkThread m_reader; ///< A folder of another machine may hold it.
};
