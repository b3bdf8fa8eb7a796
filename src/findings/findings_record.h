#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <array>
#include <optional>

/// The findings report that is being worked on. Texts; dates are `yyyymmdd`.
struct FindingsRecordFields
{
    QString Saup;            ///< `doctor_saup` of the doctor last looked up.
    QString Yeonno;          ///< Report number, digits only; "0" in a cleared record.
    QString Chart;           ///< Chart number; "0" in a cleared record.
    QString Yuhyung;         ///< Patient type code.
    QString Jinchal;         ///< Code of the report's doctor, two characters.
    QString Etc;             ///< Examination section.
    QString Suname;          ///< Patient's name.
    QString Jumin;           ///< Resident number with its dash.
    QString Sex;             ///< "M" or "F".
    QString Nai;             ///< Age, such as "41세 ".
    QString Phone;           ///< Only of a report opened for a visit.
    QString Address;         ///< Only of a report opened for a visit.
    QString Ymd;             ///< Date of capture.
    QString Balymd;          ///< Print date.
    QStringList SogyonLines; ///< The findings as the box shows them, from element 1.
    QStringList BigoLines;   ///< The same for the remark.
    QString Doctor;          ///< Doctor's name.
    QString Myonheo;         ///< Doctor's licence number.
    QString Yoyangno;        ///< Care institution number.
    QString Hospital;
    std::array<QString, 6> PicPath; ///< Empty for an empty slot.
    std::array<int, 6> PicNo = {};  ///< 0 for an empty slot.
    QString Sogyon;                 ///< Findings, several lines.
    QString Bigo;                   ///< Remark, several lines.
    /// The record's row as it was last read or stored: the values of its columns as they stood, in their order. Nothing
    /// for a report that has no row.
    std::optional<QList<QVariant>> Stored;
};

/// The one report. Only the screen that shows it, and the two ways to another one, reach for it; what they call is
/// given it.
extern FindingsRecordFields FindingsRecord;

/// Empties a record but for `Saup`.
void ClearFindingsRecord(FindingsRecordFields& record);

/// Puts the record back as it was unless `Keep` is called: a fault half-way leaves nothing half changed.
class FindingsRecordRollback
{
public:
    explicit FindingsRecordRollback(FindingsRecordFields& record) : m_record(record), m_before(record) {}
    ~FindingsRecordRollback()
    {
        if (!m_kept)
            m_record = m_before;
    }
    FindingsRecordRollback(const FindingsRecordRollback&) = delete;
    FindingsRecordRollback& operator=(const FindingsRecordRollback&) = delete;

    void Keep() { m_kept = true; }

private:
    FindingsRecordFields& m_record;
    FindingsRecordFields m_before;
    bool m_kept = false;
};
