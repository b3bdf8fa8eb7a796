#pragma once

#include "frame/forms.h"

class QLabel;
class QPushButton;
class QScrollArea;
class QToolButton;
struct PrintedPages;

/// "출력 미리보기": the sheets of a command as they will be printed, one at a time.
class frmPrintView : public StationForm
{
    Q_OBJECT

public:
    static constexpr const char16_t* FormName = u"frmPrintView";

    frmPrintView();

    /// Shows the sheets and returns when they have been answered: true for "출력". Throws what the drawing of the first
    /// sheet throws; one further on that can't be drawn is told, and the sheet before stays.
    bool Agrees(const PrintedPages& pages);

protected:
    void Form_Unload() override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    enum class Zoom { Page, Width };

    void BuildControls();
    void TurnTo(int number);
    void ZoomTo(Zoom zoom);
    /// The sheet that lies on the printer, in the size that the room wants.
    void ShowSheet();
    void Answer(bool agrees);

    const PrintedPages* m_pages = nullptr; ///< While they are asked about.
    int m_number = 0;
    bool m_isDrawn = false; ///< That sheet lies on the printer.
    Zoom m_zoom = Zoom::Page;
    bool m_agrees = false;
    QPushButton* m_back = nullptr;
    QPushButton* m_on = nullptr;
    QToolButton* m_wholePage = nullptr;
    QToolButton* m_pageWidth = nullptr;
    QPushButton* m_print = nullptr;
    QLabel* m_position = nullptr;
    QScrollArea* m_room = nullptr;
    QLabel* m_sheet = nullptr;
};
