#pragma once

#include "contracts/ado.h"
#include "frame/forms.h"

#include <QTimer>

#include <array>
#include <memory>

class fpSpread;
class QLineEdit;

/// "캡쳐소견서조회...": the list of all reports. The report chosen is in `FindingsRecord` when the form has closed.
class frmSoFind : public StationForm
{
    Q_OBJECT

public:
    static constexpr const char16_t* FormName = u"frmSoFind";

    frmSoFind();

    /// Fills the list with all reports, newest first: the first rows at once, the others while events are served.
    /// False, with a message, when there is none.
    bool FillAll();
    /// Rows are still to come.
    bool IsFilling() const { return m_rows != nullptr; }

    fpSpread& sprSo() { return *m_sprSo; }

protected:
    void Form_Load() override;
    void Form_Unload() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void BuildControls();
    void ConnectControls();

    /// Writes the first rows into the list; the rest follows. Ends the fill that is under way.
    void BeginRows(std::unique_ptr<AdoRecordset> rows);
    void WriteRows();
    void WriteRow();
    void EndRows();
    void SearchFindings(int key, const QString& value);
    void LoadFindingsByNumber(const QString& number);

    void ShowSearchBox(int x, int y);
    void RunSearchBox(int key);
    void HideSearchBox(int key);
    void OpenRow(int row);

    fpSpread* m_sprSo = nullptr;
    std::unique_ptr<AdoRecordset> m_rows; ///< Of the fill that is under way.
    int m_row = 0;                        ///< Of the list, written last.
    QTimer m_further;
    std::array<QLineEdit*, 6> m_txtSoFind = {};
};
