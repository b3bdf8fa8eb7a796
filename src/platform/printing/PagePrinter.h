#pragma once

#include "contracts/printing.h"

#include <QFont>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

class PrintQueue;
class QPageLayout;
class QPainter;

/// Where pages go; shared by the printer and its options.
struct PrintTarget
{
    QString folder;    ///< Pages become PDF files there; empty: the printer.
    QString printer;   ///< Empty: the system's default printer.
    QString file;      ///< Pages become PDF files there and beside it; empty: the folder or the printer.
    int filePages = 0; ///< Pages that have gone to `file`.
};

/// Keeps what is drawn until the sheet is sent, so that a printer is asked for only then and gets all of it or nothing.
class PagePrinter final : public PrinterObject
{
public:
    /// Draws in twips from the page's corner.
    using Drawing = std::function<void(QPainter&)>;

    /// The queue outlives it.
    PagePrinter(std::shared_ptr<PrintTarget> target, PrintQueue& queue);

    void setHeight(float twips) override { m_height = twips; }
    void setWidth(float twips) override { m_width = twips; }
    void setFontName(const QString& name) override;
    void setFontSize(int points) override;
    void setFontBold(bool on) override { m_font.setBold(on); }
    void setFontUnderline(bool on) override { m_font.setUnderline(on); }
    QImage Picture(int width) const override;
    void EndDoc() override;
    void KeepSheet() override { m_kept.push_back(std::exchange(m_drawings, {})); }
    std::function<QByteArray()> TakeDocument() override;
    void KillDoc() override { m_drawings.clear(); }

    /// The font as it is set now, in twips.
    const QFont& Font() const { return m_font; }
    void Draw(Drawing drawing) { m_drawings.push_back(std::move(drawing)); }

private:
    QByteArray PdfOf(const std::vector<Drawing>& drawings) const;
    void PrintToFile(const std::vector<Drawing>& drawings) const;
    void PrintToFolder(const std::vector<Drawing>& drawings) const;

    std::shared_ptr<PrintTarget> m_target;
    PrintQueue& m_queue;
    QFont m_font;
    float m_width = 11184; ///< A4 within the margins of an ordinary printer.
    float m_height = 16243;
    std::vector<Drawing> m_drawings;
    std::vector<std::vector<Drawing>> m_kept; ///< Sheets of a document.
};
