#pragma once

#include "platform/printing/PrintServer.h"

/// The printers of CUPS. Each call has a connection of its own, so that a server that was started anew is the same.
class CupsServer final : public PrintServer
{
public:
    SentSheet Send(const QString& printer, const QByteArray& pdf) override;
    SheetState Look(const SentSheet& sheet) override;
};
