#pragma once

#include <QString>

class ImagXpress;
class QFont;

/// Numbers of the tools, in the order of their buttons.
enum DrawingTool : int { ToolFree = 0, ToolText = 1, ToolCircle = 2, ToolBox = 3, ToolLine = 4, ToolDottedLine = 5 };

/// Pen flag of the drawing routines: the final figure, or a band that a second drawing takes back.
enum Pen : int { PenFinal = 1, PenBand = 2 };

/// Each draws into the picture of the control with a pen two pixels wide. Corners are picture pixels, in any order; the
/// colour is the platform's number.
void DrawFreeLine(ImagXpress& target, float x1, float y1, float x2, float y2, double colour);
void DrawCircle(ImagXpress& target, float x1, float y1, float x2, float y2, double colour, Pen pen);
void DrawBox(ImagXpress& target, float x1, float y1, float x2, float y2, double colour, Pen pen);
void DrawSolidLine(ImagXpress& target, float x1, float y1, float x2, float y2, double colour, Pen pen);
void DrawDottedLine(ImagXpress& target, float x1, float y1, float x2, float y2, double colour, Pen pen);
/// Strikethrough isn't taken over from the font.
void DrawFontText(ImagXpress& target, float x, float y, const QString& text, double colour, const QFont& font);

/// The figure of a tool that is dragged open by its two corners; nothing for the two others.
void DrawFigure(DrawingTool tool, ImagXpress& target, float x1, float y1, float x2, float y2, double colour, Pen pen);
