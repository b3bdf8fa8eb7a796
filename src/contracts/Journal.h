#pragma once

#include <QString>

/// Takes what an administrator may want to know later, one line each. May be called on any thread, and never waits.
class Journal
{
public:
    enum Severity { Information, Warning, Error };

    virtual ~Journal() = default;
    virtual void Write(Severity severity, const QString& line) = 0;
};
