#pragma once

#include <QList>
#include <QString>

#include <functional>

class fpSpread;
class NoteBox;
class QComboBox;
class StatusPanels;
class VisitPictures;
struct Visit;
struct VisitLine;

/// Routines that bring what the rows of the clinic say onto controls of a screen. A failing query is a
/// PlatformError.

/// Shows the pictures of a visit, serving events between them. Rows whose file is missing take no
/// place; a file that is no picture shows a mark. With `keepCursor` the grid stays where it is, otherwise its active
/// cell follows the pictures. A later fill of them ends this one. Gives the number of the last row read.
/// `read` hears the numbers of all rows before the first picture is placed, and `filled` that the last one is: this may
/// return much later, while a box stands over it.
int LoadCaptureList(const Visit& visit, VisitPictures& pictures, bool keepCursor,
                    const std::function<void(const QList<int>&)>& read = {}, const std::function<void()>& filled = {});

/// Brings the visit's note into the box. The box is empty, and knows that it holds no note, until it has been read.
void LoadCaptureNote(const Visit& visit, NoteBox& box);

/// The two grids of the capture screen that `LoadVisitHistory` fills: `sprCap(2)` and `sprCap(3)`. The screen registers
/// them when it loads; while no such screen is there, nothing is filled.
void RegisterHistoryGrids(VisitPictures* pictures, fpSpread* visits);
/// Empties the picture grid of the history and fills the list with the visits of that visit's chart, newest first, all
/// sections.
void LoadVisitHistory(const Visit& visit, const QString& kind);

/// Date, section and note of a visit in the first three columns of a row.
void WriteVisitLine(fpSpread& list, int row, const VisitLine& line);

/// Panels of a screen's status bar.
enum PatientPanel { PanelChart = 1, PanelYuhyung, PanelSuname, PanelSex, PanelAge, PanelTel, PanelJumin, PanelAddress };
/// Fills the eight panels from a visit and its patient. What the look-up has to say about the patient's data stands
/// as the remark of panel 3.
void ShowPatientPanels(StatusPanels& bar, const Visit& visit);

/// Fills a list with the days "01" to the last of the month, and selects `currentDay` where the month has it, the first
/// otherwise. A month that doesn't exist leaves the list alone.
void FillDayCombo(const QString& year, const QString& month, const QString& currentDay, QComboBox& list);
