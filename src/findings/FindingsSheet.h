#pragma once

#include <QImage>
#include <QObject>

#include <array>
#include <utility>

struct FindingsRecordFields;
class FindingsBox;
class ImagXpress;
class QComboBox;
class QLabel;
class QLineEdit;
class QWidget;

/// What the findings screen shows of a record: its controls, all but the buttons, and the way from a record to them and
/// back.
class FindingsSheet : public QObject
{
    Q_OBJECT

public:
    /// Of the record, and not in it.
    struct Surroundings
    {
        QString doctorListName;                      ///< Null where no row of the doctor is valid.
        QList<std::pair<QImage, int>> pictures = {}; ///< With their numbers, without those that are gone.
    };

    /// Builds the controls on the form, which owns them.
    explicit FindingsSheet(QWidget& form);

    void FillLists(const QStringList& doctors);
    void Show(const FindingsRecordFields& record, const Surroundings& surroundings);
    void ShowNumber(const FindingsRecordFields& record);
    /// Name, licence and place of business of the record's doctor.
    void ShowDoctor(const FindingsRecordFields& record);
    /// An entry of `cmbJinchal`, or one that the list doesn't hold.
    void ShowDoctorChoice(const QString& entry);
    void ShowTexts(const QString& findings, const QString& remark);
    /// Empties the controls; the print date stays.
    void Clear();
    void setFocus();

    /// What has been typed and chosen.
    void Take(FindingsRecordFields& record) const;
    QString Findings() const;
    QString Remark() const;
    /// The two texts as their boxes have wrapped them.
    void TakeLines(FindingsRecordFields& record) const;
    /// At the end of the findings, as if it were typed there.
    void Append(const QString& text);
    /// The texts aren't empty, and not the record's.
    bool HasOtherText(const FindingsRecordFields& record) const;
    const std::array<ImagXpress*, 6>& Slots() const { return m_imgSogyon; }

    /// The controls have been emptied: what stands in them isn't the report's.
    bool IsBlank() const { return m_blank; }
    void setOwn() { m_blank = false; }

Q_SIGNALS:
    /// Entry of `cmbJinchal`, and the one that the other boxes belong to.
    void DoctorIsChosen(const QString& entry, const QString& before);

private:
    void BuildBoxes();
    void BuildHeader();
    void BuildPictures();
    void StepPrintYear(int years);

    QWidget& m_form;
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
    std::array<ImagXpress*, 6> m_imgSogyon = {};
    std::array<QLabel*, 6> m_lblSogyon = {};
    QString m_doctorChoice; ///< The entry of `cmbJinchal` that the other boxes belong to.
    bool m_blank = true;
};
