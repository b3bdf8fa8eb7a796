#pragma once

#include "contracts/dicom.h"
#include "frame/WorkThread.h"

#include <stop_token>

/// Where the server's reports of storage commitment come in, on a thread of its own. One process of a machine can have
/// the port; one that can't tries again from time to time.
class ReportDoor
{
public:
    ReportDoor(int port, const DicomTls& tls);
    ~ReportDoor();
    ReportDoor(const ReportDoor&) = delete;
    ReportDoor& operator=(const ReportDoor&) = delete;

private:
    WorkThread m_thread;
    std::stop_source m_stop;
};
