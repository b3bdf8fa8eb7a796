#pragma once

#include "frame/forms.h"

#include "screenparts/TextDraft.h"

#include <array>

class FindingsBox;
class ImagXpress;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class UpDownArrows;

/// "캡쳐소견": writes, shows, stores, deletes and prints the report of `FindingsRecord`.
class frmCapSogyon : public StationForm
{
    Q_OBJECT

public:
    static constexpr const char16_t* FormName = u"frmCapSogyon";

    frmCapSogyon();

    /// Shows the report of the record's visit, or starts a new one. A fault leaves the screen as it was.
    void OpenRecord();

    /// Empties the controls; the print date and the record stay.
    void SogyonClear();

    /// The boxes hold a text that isn't the record's: loading another report would lose it.
    bool HasUnsavedText() const;
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
    struct Surroundings;
    /// With `Cut` a column was too short, and the screen keeps the whole texts.
    enum class Saved { No, Whole, Cut };
    /// What a question before printing has led to.
    enum class Printed { NotWanted, NotStored, Yes };

    void BuildControls();
    void BuildHeader();
    void BuildBoxes();
    void BuildPictures();
    void BuildButtons();
    void ConnectControls();

    void FillDateLists();
    void StartNewReport(bool hasTable);
    void ShowFindings();
    static Surroundings ReadSurroundings();
    void ShowRecord(const Surroundings& surroundings);
    void ShowDoctor();
    void ShowDoctorChoice(const QString& entry);
    void ChooseDoctor();

    /// Runs the command of a button, unless a list or a print is under way.
    void Run(void (frmCapSogyon::*command)());
    void SaveAndClear();
    void DeleteAndClear();
    void PrintAndClear();
    Saved SaveFindings();
    /// A blank screen's text would take the place of the whole report.
    bool MayReplaceReport() const;
    /// Another station has changed the report: false when nothing is to be stored now.
    bool MayStoreOverOther();
    void ShowTheirs();
    /// Tells the record's report from others.
    static QString MarkOfRecord();
    std::optional<TextDraft::Draft> UnsavedDraft() const;
    TextDraft::Draft DraftOfBoxes() const;
    void TakeUpDraft(const TextDraft::Draft& draft);
    void DeleteFindings();
    void TakeInput();
    Printed PrintFindings();
    void OpenFromList();
    void FillFindingsList();
    void Close();

    void StepPrintYear(int years);
    void ShowEarlierFindings();
    void ChooseOpinion();
    void AppendOpinionText(const QString& code);

    FindingsBox* m_txtSogyon = nullptr;
    FindingsBox* m_txtBigo = nullptr;
    QLineEdit* m_txtYeonNo = nullptr;
    QLineEdit* m_txtSuname = nullptr;
    QLineEdit* m_txtJumin = nullptr;
    QLineEdit* m_txtNai = nullptr;
    QLineEdit* m_txtSex = nullptr;
    QLineEdit* m_txtMyonheo = nullptr;
    QLineEdit* m_txtDoctor = nullptr;
    QLineEdit* m_txtYoyangno = nullptr;
    QLineEdit* m_txtHospital = nullptr;
    QLineEdit* m_txtCaymd = nullptr;
    QLineEdit* m_txtPyy = nullptr;
    QComboBox* m_cmbJinchal = nullptr;
    QComboBox* m_cmbPmm = nullptr;
    QComboBox* m_cmbPdd = nullptr;
    UpDownArrows* m_udPYY = nullptr;
    std::array<ImagXpress*, 6> m_imgSogyon = {};
    std::array<QLabel*, 6> m_lblSogyon = {};
    QPushButton* m_cmdSoFind = nullptr;
    QPushButton* m_cmdQry = nullptr;
    QString m_doctorChoice; ///< The entry of `cmbJinchal` that the other boxes belong to.
    bool m_listing = false; ///< The list of reports is being filled or shown.
    bool m_printing = false;
    bool m_blank = true;   ///< The boxes have been emptied: what stands in them isn't the report's.
    QString m_shownReport; ///< Whose texts the boxes hold.
    TextDraft m_draft{[this] { return UnsavedDraft(); }, this};
};
