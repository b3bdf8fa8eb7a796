#pragma once

#include "frame/WorkThread.h"

#include <array>

struct FindingsRecordFields;
class ImagXpress;

/// Hands findings reports, as they are printed but for the resident number's last digits, over to the sender, where the
/// setup wants that. Nobody waits for it.
class ReportSending
{
public:
    ~ReportSending() { End(); }

    /// The report has been stored. The pages are drawn now, and become a document behind that; the same pages again are
    /// the same document.
    void Send(const FindingsRecordFields& record, const std::array<ImagXpress*, 6>& pictures);
    /// It has been deleted.
    void Withdraw(const FindingsRecordFields& record);
    /// Waits a moment for what is under way.
    void End();

private:
    WorkThread m_work;
};
