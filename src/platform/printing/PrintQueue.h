#pragma once

#include "contracts/printing.h"
#include "frame/WorkThread.h"
#include "platform/printing/PrintServer.h"

#include <QTimer>

#include <memory>

/// Sheets on their way to printers, on a thread of its own: the screen never waits for one. Used by the screen's
/// thread.
class PrintQueue final : public PrinterJobs
{
public:
    static constexpr int LookMs = 2000;

    explicit PrintQueue(std::unique_ptr<PrintServer> server, int lookMs = LookMs);
    ~PrintQueue() override;
    PrintQueue(const PrintQueue&) = delete;
    PrintQueue& operator=(const PrintQueue&) = delete;

    /// Of one printer in this order. An empty name is that of the usual one.
    void Send(const QString& printer, const QByteArray& pdf);
    /// Sheets that no printer has taken go to this one from here on.
    void Redirect(const QString& printer);

    void setPresenter(std::function<void(const QString& trouble)> present) override;
    void Dismiss() override;
    void End(int patienceMs) override;

private:
    struct Sheets;
    /// On the thread; what has come of it is shown behind it.
    void Post(std::function<void(Sheets&)> work);
    void Show(const QString& trouble, bool isEmpty);

    const std::shared_ptr<Sheets> m_sheets;    ///< The thread's own, which may outlive this object.
    const std::shared_ptr<PrintQueue*> m_self; ///< Null behind it once this object has gone.
    std::function<void(const QString& trouble)> m_present;
    QString m_trouble;
    QString m_dismissed;
    int m_sent = 0;
    QTimer m_nextLook;
    WorkThread m_thread;
};
