#pragma once

#include <QLockFile>

#include <memory>

/// Tells whether another instance of the program runs on this user's desktop. The instance that asked first holds a
/// lock file until it ends; one that crashed leaves nothing that stands in the way.
class InstanceLock
{
public:
    /// `runtimeFolder` is the folder of the user's session; when it is empty or can't be written, the lock lies in
    /// `programFolder`.
    InstanceLock(const QString& runtimeFolder, const QString& programFolder);

    /// Answered anew at each call until it is false; from then on this instance is the one.
    bool HeldByAnother();

private:
    std::unique_ptr<QLockFile> m_file;
};
