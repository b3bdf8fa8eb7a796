#pragma once

#include <QByteArray>
#include <QString>

/// A sheet that a printer has taken.
struct SentSheet
{
    QString printer;
    int job = 0;
};

/// How a sheet that was taken stands.
struct SheetState
{
    bool isThrough = false; ///< Printed, cancelled by somebody, or known to nobody any more.
    bool isLost = false;    ///< The printer has given it up: it comes out no more.
    QString trouble = {};   ///< What stands in its way, for the operator; empty when nothing does.
};

/// The system's printers. Used by one thread, which may be held for some seconds.
class PrintServer
{
public:
    virtual ~PrintServer() = default;

    /// Hands a sheet to the printer, to the system's usual one for an empty name. Throws PlatformError when it doesn't
    /// take it.
    virtual SentSheet Send(const QString& printer, const QByteArray& pdf) = 0;
    /// Throws PlatformError when nobody answers.
    virtual SheetState Look(const SentSheet& sheet) = 0;
};
