#include "editor/drawing_tools.h"

#include "contracts/ImagXpress.h"

#include <QFont>

namespace {
constexpr int PenWidth = 2;

void TakePen(ImagXpress& target, Pen pen, int style)
{
    target.setDrawMode(pen == PenFinal ? DrawModeCopy : DrawModeInvert);
    target.setDrawStyle(style);
    target.setDrawWidth(PenWidth);
}
} // namespace

void DrawFreeLine(ImagXpress& target, float x1, float y1, float x2, float y2, double colour)
{
    DrawSolidLine(target, x1, y1, x2, y2, colour, PenFinal);
}

void DrawCircle(ImagXpress& target, float x1, float y1, float x2, float y2, double colour, Pen pen)
{
    TakePen(target, pen, DrawStyleSolid);
    target.DrawArc(x1, y1, x2, y2, 1, 1, colour);
}

void DrawBox(ImagXpress& target, float x1, float y1, float x2, float y2, double colour, Pen pen)
{
    TakePen(target, pen, DrawStyleSolid);
    target.DrawRoundRect(x1, y1, x2, y2, 0, 0, colour);
}

void DrawSolidLine(ImagXpress& target, float x1, float y1, float x2, float y2, double colour, Pen pen)
{
    TakePen(target, pen, DrawStyleSolid);
    target.DrawLine(x1, y1, x2, y2, colour);
}

void DrawDottedLine(ImagXpress& target, float x1, float y1, float x2, float y2, double colour, Pen pen)
{
    TakePen(target, pen, DrawStyleDot);
    target.DrawLine(x1, y1, x2, y2, colour);
}

void DrawFontText(ImagXpress& target, float x, float y, const QString& text, double colour, const QFont& font)
{
    TakePen(target, PenFinal, DrawStyleSolid);
    QFont drawn = target.DrawFont();
    drawn.setFamily(font.family());
    drawn.setBold(font.bold());
    drawn.setItalic(font.italic());
    drawn.setPointSizeF(font.pointSizeF());
    drawn.setUnderline(font.underline());
    drawn.setWeight(font.weight());
    target.setDrawFont(drawn);
    target.DrawText(x, y, text, colour);
}

void DrawFigure(DrawingTool tool, ImagXpress& target, float x1, float y1, float x2, float y2, double colour, Pen pen)
{
    switch (tool) {
    case ToolCircle:
        return DrawCircle(target, x1, y1, x2, y2, colour, pen);
    case ToolBox:
        return DrawBox(target, x1, y1, x2, y2, colour, pen);
    case ToolLine:
        return DrawSolidLine(target, x1, y1, x2, y2, colour, pen);
    case ToolDottedLine:
        return DrawDottedLine(target, x1, y1, x2, y2, colour, pen);
    case ToolFree:
    case ToolText:
        return;
    }
}
