#include "platform/printing/PrintQueue.h"

#include "contracts/PlatformError.h"
#include "frame/journal.h"

#include <QStringList>

#include <algorithm>
#include <atomic>
#include <vector>

using namespace Qt::StringLiterals;

/// On the thread, but for the count.
struct PrintQueue::Sheets
{
    struct Sheet
    {
        QString printer; ///< As it was asked for.
        QByteArray pdf;  ///< Until a printer has taken it.
        int number = 0;  ///< In the order in which they were sent, from 1.
        SentSheet taken;
        QString trouble;
        bool isLost = false;

        bool IsTaken() const { return taken.job != 0; }
    };

    std::unique_ptr<PrintServer> server;
    std::vector<Sheet> sheets;
    std::atomic<int> untaken = 0;
    /// The last one that was sent before the operator gave up what no printer had taken: a look that was on its way
    /// then is to offer none of them any more.
    std::atomic<int> givenUp = 0;

    void Add(const QString& printer, const QByteArray& pdf, int number);
    void Look();
    void GiveUp();
    void Count();
    QString Trouble() const;

private:
    /// False when the printer doesn't take it.
    bool Offer(Sheet& sheet) const;
};

bool PrintQueue::Sheets::Offer(Sheet& sheet) const
{
    try {
        sheet.taken = server->Send(sheet.printer, sheet.pdf);
        sheet.pdf.clear();
        sheet.trouble.clear();
        return true;
    } catch (const PlatformError& fault) {
        sheet.trouble = fault.Text();
        return false;
    }
}

void PrintQueue::Sheets::Add(const QString& printer, const QByteArray& pdf, int number)
{
    const auto waits = std::ranges::find_if(
        sheets, [&printer](const Sheet& sheet) { return !sheet.IsTaken() && sheet.printer == printer; });
    Sheet sheet{.printer = printer, .pdf = pdf, .number = number, .taken = {}, .trouble = {}};
    if (waits == sheets.end())
        Offer(sheet);
    else
        sheet.trouble = waits->trouble;
    sheets.push_back(std::move(sheet));
    Count();
}

void PrintQueue::Sheets::Look()
{
    QStringList refusing;
    bool answers = true;
    for (Sheet& sheet : sheets) {
        if (!sheet.IsTaken()) {
            // Behind one that wasn't taken the others of its printer wait their turn.
            if (sheet.number > givenUp && !refusing.contains(sheet.printer) && !Offer(sheet))
                refusing << sheet.printer;
            continue;
        }
        if (sheet.isLost || !answers)
            continue;
        try {
            const SheetState state = server->Look(sheet.taken);
            sheet.trouble = state.trouble;
            sheet.isLost = state.isLost;
            if (state.isThrough && !state.isLost)
                sheet.taken = {};
        } catch (const PlatformError& fault) {
            sheet.trouble = fault.Text();
            answers = false;
        }
    }
    std::erase_if(sheets, [](const Sheet& sheet) { return !sheet.IsTaken() && sheet.pdf.isEmpty(); });
    Count();
}

void PrintQueue::Sheets::GiveUp()
{
    std::erase_if(sheets,
                  [this](const Sheet& sheet) { return sheet.isLost || (!sheet.IsTaken() && sheet.number <= givenUp); });
    Count();
}

void PrintQueue::Sheets::Count()
{
    untaken = static_cast<int>(std::ranges::count_if(sheets, [](const Sheet& sheet) { return !sheet.IsTaken(); }));
}

QString PrintQueue::Sheets::Trouble() const
{
    for (const Sheet& sheet : sheets) {
        if (!sheet.IsTaken())
            return u"%1 %2장 대기, 닫으면 취소합니다."_s.arg(sheet.trouble).arg(untaken.load());
    }
    // What comes out no more is worse than what comes late.
    const auto lost = std::ranges::find_if(sheets, &Sheet::isLost);
    const auto late = std::ranges::find_if(sheets, [](const Sheet& sheet) { return !sheet.trouble.isEmpty(); });
    return lost != sheets.end() ? lost->trouble : late != sheets.end() ? late->trouble : QString();
}

PrintQueue::PrintQueue(std::unique_ptr<PrintServer> server, int lookMs)
    : m_sheets(std::make_shared<Sheets>()), m_self(std::make_shared<PrintQueue*>(this))
{
    m_sheets->server = std::move(server);
    m_nextLook.setSingleShot(true);
    m_nextLook.setInterval(lookMs);
    QObject::connect(&m_nextLook, &QTimer::timeout, &m_nextLook, [this] { Post(&Sheets::Look); });
}

PrintQueue::~PrintQueue()
{
    *m_self = nullptr;
}

void PrintQueue::Post(std::function<void(Sheets&)> work)
{
    m_thread.Post([work = std::move(work), sheets = m_sheets, self = m_self] {
        work(*sheets);
        PostToScreen([self, trouble = sheets->Trouble(), isEmpty = sheets->sheets.empty()] {
            if (*self != nullptr)
                (*self)->Show(trouble, isEmpty);
        });
    });
}

void PrintQueue::Show(const QString& trouble, bool isEmpty)
{
    if (!isEmpty && !m_nextLook.isActive())
        m_nextLook.start();
    m_trouble = trouble;
    if (trouble != m_dismissed)
        m_dismissed.clear();
    if (m_present)
        m_present(m_dismissed.isEmpty() ? m_trouble : QString());
}

void PrintQueue::Send(const QString& printer, const QByteArray& pdf)
{
    m_dismissed.clear();
    Post([printer, pdf, number = ++m_sent](Sheets& sheets) { sheets.Add(printer, pdf, number); });
}

void PrintQueue::Redirect(const QString& printer)
{
    Post([printer](Sheets& sheets) {
        for (Sheets::Sheet& sheet : sheets.sheets) {
            if (!sheet.IsTaken())
                sheet.printer = printer;
        }
    });
}

void PrintQueue::setPresenter(std::function<void(const QString& trouble)> present)
{
    m_present = std::move(present);
}

void PrintQueue::Dismiss()
{
    m_dismissed = m_trouble;
    if (m_present)
        m_present({});
    m_sheets->givenUp = m_sent;
    Post(&Sheets::GiveUp);
}

void PrintQueue::End(int patienceMs)
{
    const bool isDone = m_thread.AwaitIdle(patienceMs);
    if (const int untaken = m_sheets->untaken; untaken > 0 || !isDone)
        journal::NoteFault(u"프로그램이 끝나 출력 %1장을 보내지 못하였습니다."_s.arg(qMax(untaken, 1)));
}
