#pragma once

#include "findings/findings_record.h"
#include "findings/FindingsDraft.h"
#include "findings/FindingsLarge.h"
#include "findings/FindingsSheet.h"
#include "findings/ReportSending.h"
#include "frame/forms.h"

/// "캡쳐소견": writes, shows, stores, deletes and prints the report of `FindingsRecord`.
class frmCapSogyon : public StationForm
{
    Q_OBJECT

public:
    static constexpr const char16_t* FormName = u"frmCapSogyon";

    frmCapSogyon();

    /// Shows the report of the record's visit, or starts a new one. A fault leaves the screen as it was.
    void OpenRecord();

    /// The boxes hold a text that isn't the record's: loading another report would lose it.
    bool HasUnsavedText() const { return m_sheet.HasOtherText(m_record); }
    /// Stores that text as its button does, without the first question. False when it isn't stored whole.
    bool StoreText();
    /// Asks whether a text of this report that an earlier run left is to come back.
    void OfferDraft();
    /// The list of reports is open, or pages are being printed.
    bool IsBusy() const { return m_listing || m_printing; }

protected:
    void Form_Load() override;
    void Form_Unload() override;

private:
    /// With `Cut` a column was too short, and the screen keeps the whole texts.
    enum class Saved { No, Whole, Shortened };
    /// What a question before printing has led to.
    enum class Printed { NotWanted, NotStored, Yes };

    void BuildButtons();
    void BuildNotices();

    void StartNewReport(bool hasTable);
    /// With the doctors to choose from, where they are others. The record's doctor as his row tells is the record's
    /// from now on. A fault leaves the screen as it was.
    void ShowRecord(const std::optional<QStringList>& doctors = {});
    void ChooseDoctor(const QString& entry, const QString& before);

    /// Runs the command of a button, unless a list or a print is under way.
    void Run(void (frmCapSogyon::*command)());
    void Clear();
    void SaveAndClear();
    void DeleteAndClear();
    void PrintAndClear();
    void OpenFromList();
    void Close();

    Saved SaveFindings();
    /// A blank screen's text would take the place of the whole report.
    bool MayReplaceReport() const;
    void ShowTheirs();
    void DeleteFindings();
    Printed PrintFindings();
    void FillFindingsList();

    void ShowEarlierFindings();
    void ChooseOpinion();

    FindingsRecordFields& m_record = FindingsRecord;
    FindingsSheet m_sheet{*this};
    FindingsDraft m_draft{m_record, m_sheet, this};
    FindingsLarge m_large{*this, m_sheet.Slots()};
    ReportSending m_sending;
    bool m_listing = false; ///< The list of reports is being filled or shown.
    bool m_printing = false;
};
