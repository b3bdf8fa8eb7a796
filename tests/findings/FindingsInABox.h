#pragma once

#include "contracts/StatusPanels.h"
#include "findings/findings_popups.h"
#include "findings/findings_record.h"
#include "findings/FindingsBox.h"
#include "findings/frmCapSogyon.h"
#include "findings/open_findings.h"
#include "screenparts/fill_routines.h"
#include "screenparts/VisitPictures.h"
#include "support/StationInABox.h"

/// A station with doctors, and the findings screen opened on the visit as the capture screen opens it.
class FindingsInABox : public StationInABox
{
public:
    explicit FindingsInABox(const QString& driver = QStringLiteral("QSQLITE")) : StationInABox(driver)
    {
        RegisterFindingsPopups();
        FindingsRecord = {};
        SaupTable = {{1, {QStringLiteral("11100001"), QStringLiteral("나래의원")}}};
        Run(QStringLiteral(R"(
INSERT INTO doctor (doctor_code, doctor_ymd, doctor_jungji, doctor_myung, doctor_name, doctor_meonheo, doctor_saup,
    doctor_kwamok) VALUES
('11', '20150101', '20191231', '옛이름', '나누리', '10001', '1', '01'),
('11', '20200101', '', '나누리', '나누리', '10001', '1', '01'),
('12', '20180301', '20261124', '다온유', '다온유', '10002', '7', '01'),
('13', '20160101', '20261123', '라온', '라온', '10003', '1', '01'),
('14', '20261125', '', '마루', '마루', '10004', '1', '01'),
('91', '20150101', '', '검사실', '', '', '1', '81');
INSERT INTO so (so_code, so_gubun, so_myung) VALUES ('G001', '4', '식도 정상. '), ('G002', '4', '위염 소견. '),
('G001', '1', '다른 글');
)"));
        m_grid = CreateObject<fpSpread>(QStringLiteral("FPSpreadADO.fpSpread"));
        m_grid->setMaxCols(6);
        m_grid->setMaxRows(20);
        m_panels = CreateObject<StatusPanels>(QStringLiteral("MSComctlLib.StatusBar"));
        m_panels->setPanelCount(8);
        ShowPatientPanels(*m_panels, CurrentVisit());
    }

    /// Both engines as the column "driver" of a test's data.
    static void AddEngines()
    {
        QTest::addColumn<QString>("driver");
        QTest::newRow("sqlite") << QStringLiteral("QSQLITE");
        QTest::newRow("mariadb") << QStringLiteral("QMARIADB");
    }

    fpSpread& Grid() { return *m_grid; }

    /// The grid in that layout, with the visit's pictures.
    void Fill(int layout)
    {
        m_pictures = std::make_unique<VisitPictures>(*m_grid, layout);
        LoadCaptureList(CurrentVisit(), *m_pictures, false);
    }

    frmCapSogyon& Open(int gridNumber = 1)
    {
        if (m_grid->DataRowCnt() == 0)
            Fill(gridNumber);
        OpenFindings({*m_pictures, *m_panels});
        return Form<frmCapSogyon>();
    }

    static FindingsBox& Findings()
    {
        return *Form<frmCapSogyon>().findChild<FindingsBox*>(QStringLiteral("txtSogyon"));
    }
    static FindingsBox& Remark() { return *Form<frmCapSogyon>().findChild<FindingsBox*>(QStringLiteral("txtBigo")); }
    static QString TextOf(const QString& box) { return Form<frmCapSogyon>().findChild<QLineEdit*>(box)->text(); }

    /// Presses the button with that caption; the questions are answered in turn.
    void Press(const QString& caption, const std::deque<bool>& answers = {true})
    {
        Desk().shown.clear();
        Desk().answers = answers;
        for (QPushButton* button : Form<frmCapSogyon>().findChildren<QPushButton*>()) {
            if (button->text() == caption)
                QTest::mouseClick(button, Qt::LeftButton);
        }
        Desk().answers.clear();
    }

    /// A stored report of another visit.
    void AddReport(const QString& number, const QString& chart, const QString& name, const QString& ymd = {})
    {
        Run(QStringLiteral(
                "INSERT INTO caso (caso_yeonno, caso_chart, caso_yuhyung, caso_ymd, caso_suname, caso_jumin, "
                "caso_jinchal, caso_etc, caso_no2, caso_sogyon, caso_balymd, caso_doctor, caso_hospital) "
                "VALUES ('%1', '%2', '01', '%4', '%3', '720505-1234567', '13', '위내시경', 5, '  정상.', "
                "'20260101', '라온', '옛의원');")
                .arg(number, chart, name, ymd.isEmpty() ? QStringLiteral("20260303") : ymd));
    }

private:
    std::unique_ptr<fpSpread> m_grid;
    std::unique_ptr<VisitPictures> m_pictures;
    std::unique_ptr<StatusPanels> m_panels;
};
