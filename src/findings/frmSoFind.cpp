#include "findings/frmSoFind.h"

#include "contracts/fpSpread.h"
#include "findings/findings_record.h"
#include "findings/findings_rows.h"
#include "frame/components.h"
#include "frame/composition.h"
#include "frame/controls.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "frame/services.h"
#include "frame/twips.h"
#include "records/acts.h"
#include "records/Statement.h"
#include "text/text_routines.h"

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace {

constexpr int ListRows = 500;
constexpr int HeadingHeightTwips = 255;
constexpr int KeyName = 4;
constexpr int KeyChart = 2;

/// A column of the list, which is also a key to search by. Places are twips from the list's left edge.
struct ListColumn
{
    const char16_t* heading;
    const char16_t* column;
    const char16_t* mask; ///< Null: shown as it is.
    double width;
    int from;
    int to;
    int boxLeft;
    int boxWidth;
    int longest;
};

constexpr std::array<ListColumn, 6> Columns{{
    {u"연번호", u"caso_yeonno", u"0000-000000", 12.25, 615, 2085, 630, 1500, 10},
    {u"차트번호", u"caso_chart", nullptr, 9.12, 2085, 3210, 2100, 1140, 8},
    {u"유형", u"caso_yuhyung", nullptr, 2.87, 3210, 3555, 3220, 370, 2},
    {u"수진자명", u"caso_suname", nullptr, 9.12, 3555, 4680, 3580, 1120, 10},
    {u"주민번호", u"caso_jumin", u"000000-0000000", 14.87, 4680, 6480, 4690, 1820, 13},
    {u"캡쳐일자", u"caso_ymd", u"0000-00-00", 11.12, 6480, 7815, 6490, 1365, 8},
}};

/// So often events are served while the list is written.
constexpr int ServeEventsMs = 4;
/// So long the list waits before it looks for rows that haven't come.
constexpr int StarvedMs = 2;

/// Its columns are those of the list, in their order.
constexpr char16_t ListStatement[] =
    u" SELECT caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_jumin, caso_ymd  FROM caso ";

void TellNothingFound()
{
    ShowInformation(u" 캡쳐소견서가 없습니다.!!"_s);
}

} // namespace

frmSoFind::frmSoFind() : StationForm(QString::fromUtf16(FormName))
{
    BuildControls();
    ConnectControls();
}

void frmSoFind::BuildControls()
{
    setWindowTitle(u"캡쳐소견서조회..."_s);
    setFixedSize(PixelsFromTwips(8100), PixelsFromTwips(4455));
    auto* heading = Named(new PlainLabel(u"캡쳐소견서 조회..."_s, this), u"lbl"_s, u"캡쳐소견서 조회"_s,
                          RectFromTwips(0, 0, 8175, 375));
    heading->setStyleSheet(u"color: #ffffff; background: #008080; padding-left: 8px;"_s);

    m_sprSo = Named(&PlaceControl<fpSpread>(u"FPSpreadADO.fpSpread"_s, this), u"sprSo"_s, u"캡쳐소견서 목록"_s,
                    RectFromTwips(0, 360, 8100, 4095));
    // Headings without padding: the column of the type is just as wide as its two syllables.
    m_sprSo->setStyleSheet(u"QTableView, QHeaderView, QHeaderView::section { font-family: \"돋움체\"; font-size: 9pt; }"
                           "QHeaderView::section { font-size: 8pt; padding: 0px; }"_s);
    m_sprSo->setMaxCols(static_cast<int>(Columns.size()));
    m_sprSo->setMaxRows(ListRows);
    QStringList headings;
    for (size_t at = 0; at < Columns.size(); ++at) {
        const ListColumn& column = Columns[at];
        const int key = static_cast<int>(at) + 1;
        headings << QString::fromUtf16(column.heading);
        m_sprSo->setColWidth(key, column.width);
        auto* box = Named(new QLineEdit(this), u"txtSoFind(%1)"_s.arg(key), headings.last() + u" 찾기"_s,
                          RectFromTwips(column.boxLeft, 360, column.boxWidth, 280));
        box->setMaxLength(column.longest);
        box->setStyleSheet(u"padding: 0px;"_s);
        box->setInputMethodHints(key == KeyName ? Qt::ImhNone : Qt::ImhPreferLatin);
        box->installEventFilter(this);
        m_txtSoFind[at] = box;
    }
    m_sprSo->setHeadings(headings);
}

void frmSoFind::ConnectControls()
{
    connect(&m_further, &QTimer::timeout, this, GuardedSlot([this] { WriteRows(); }));
    connect(m_sprSo, &fpSpread::DblClick, this, GuardedSlot([this](int, int row) { OpenRow(row); }));
    connect(m_sprSo, &fpSpread::KeyDown, this, GuardedSlot([this](int keyCode, int) {
                if (keyCode == 13)
                    OpenRow(m_sprSo->ActiveRow());
            }));
    connect(m_sprSo, &fpSpread::RightClick, this,
            GuardedSlot([this](int, int, int, int x, int y) { ShowSearchBox(x, y); }));
}

void frmSoFind::Form_Load()
{
    for (QLineEdit* box : m_txtSoFind)
        box->hide();
}

void frmSoFind::Form_Unload()
{
    EndRows();
}

bool frmSoFind::FillAll()
{
    auto rows =
        OpenRows(Statement(ListStatement).Piece(u" ORDER BY caso_yeonno DESC "), adOpenForwardOnly, adAsyncFetch);
    if (!HasRow(*rows)) {
        TellNothingFound();
        return false;
    }
    BeginRows(std::move(rows));
    return true;
}

void frmSoFind::BeginRows(std::unique_ptr<AdoRecordset> rows)
{
    m_rows = std::move(rows);
    m_row = 0;
    m_further.start(0);
    WriteRows();
}

void frmSoFind::WriteRows()
{
    auto ended = qScopeGuard([this] { EndRows(); });
    QElapsedTimer slice;
    slice.start();
    while (m_rows != nullptr && slice.elapsed() < ServeEventsMs) {
        if (m_rows->Eof()) {
            const bool goesOn = m_rows->IsFetching();
            if (m_rows->Eof() && !goesOn)
                return;
            if (m_rows->Eof()) {
                m_further.start(StarvedMs);
                break;
            }
            m_further.start(0);
        }
        WriteRow();
        m_rows->MoveNext();
    }
    ended.dismiss();
}

void frmSoFind::WriteRow()
{
    ++m_row;
    if (m_row > m_sprSo->MaxRows())
        m_sprSo->setMaxRows(m_sprSo->MaxRows() * 2);
    m_sprSo->setRow(m_row);
    for (size_t at = 0; at < Columns.size(); ++at) {
        const int place = static_cast<int>(at);
        const QString text = FieldText(*m_rows, place);
        m_sprSo->setCol(place + 1);
        m_sprSo->setText(Columns[at].mask != nullptr ? LayIntoMask(text, Columns[at].mask) : text);
    }
}

void frmSoFind::EndRows()
{
    if (m_rows == nullptr)
        return;
    m_further.stop();
    m_rows.reset();
    m_sprSo->setMaxRows(qMax(ListRows, m_row));
}

void frmSoFind::SearchFindings(int key, const QString& value)
{
    const QString column = QString::fromUtf16(Columns[static_cast<size_t>(key - 1)].column);
    acts::Act act{acts::Kind::Searched};
    act.detail = column + u' ' + value;
    acts::Record(act);
    auto rows = OpenRows(Statement(ListStatement)
                             .Piece(u" WHERE ")
                             .Piece(column)
                             .Quoted(u" >= '", value)
                             .Piece(u" ORDER BY ")
                             .Piece(column)
                             .Piece(u" ASC "),
                         adOpenForwardOnly, adAsyncFetch);
    if (!HasRow(*rows)) {
        TellNothingFound();
        return;
    }
    EndRows();
    m_sprSo->DeleteRows(1, m_sprSo->DataRowCnt());
    BeginRows(std::move(rows));
}

void frmSoFind::LoadFindingsByNumber(const QString& number)
{
    if (!ReadFindingsByNumber(FindingsRecord, number)) {
        ShowInformation(u"소견서가 존재하지 않습니다.!!"_s);
        return;
    }
    acts::Act act{acts::Kind::LookedAt, FindingsRecord.Chart, Trim(FindingsRecord.Ymd), FindingsRecord.Etc};
    act.detail = u"소견서 "_s + number;
    acts::Record(act);
}

void frmSoFind::ShowSearchBox(int x, int y)
{
    if (y <= 0 || y > HeadingHeightTwips)
        return;
    for (size_t at = 0; at < Columns.size(); ++at) {
        if (x < Columns[at].from || x >= Columns[at].to)
            continue;
        m_txtSoFind[at]->show();
        m_txtSoFind[at]->raise();
        m_txtSoFind[at]->setFocus();
    }
}

void frmSoFind::RunSearchBox(int key)
{
    const auto end = qScopeGuard([this, key] {
        HideSearchBox(key);
        m_sprSo->SetActiveCell(1, 1);
        m_sprSo->setFocus();
    });
    QString value = Trim(TextOf(*m_txtSoFind[static_cast<size_t>(key - 1)]));
    if (value.isEmpty())
        return;
    if (key == KeyChart && IsNumericText(value))
        value = LayIntoMask(value, u"00000000");
    SearchFindings(key, value);
}

void frmSoFind::HideSearchBox(int key)
{
    QLineEdit* box = m_txtSoFind[static_cast<size_t>(key - 1)];
    DropComposition(box);
    box->clear();
    box->hide();
}

bool frmSoFind::eventFilter(QObject* watched, QEvent* event)
{
    for (size_t at = 0; at < m_txtSoFind.size(); ++at) {
        if (watched != m_txtSoFind[at])
            continue;
        const int key = static_cast<int>(at) + 1;
        if (event->type() == QEvent::KeyPress) {
            const int pressed = static_cast<QKeyEvent*>(event)->key();
            if (pressed == Qt::Key_Return || pressed == Qt::Key_Enter) {
                Guarded([this, key] { RunSearchBox(key); });
                return true;
            }
        } else if (event->type() == QEvent::FocusOut &&
                   static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason) {
            Guarded([this, key] { HideSearchBox(key); });
        }
    }
    return StationForm::eventFilter(watched, event);
}

void frmSoFind::OpenRow(int row)
{
    const auto end = qScopeGuard([this] { Unload(); });
    const QString number = Trim(m_sprSo->TextAt(1, row)).remove(u'-');
    if (!number.isEmpty() && IsNumericText(number))
        LoadFindingsByNumber(number);
}
