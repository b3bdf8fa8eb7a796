#pragma once

#include "contracts/ClientSetup.h"
#include "records/capture_index.h"
#include "records/picture_facts.h"
#include "visit/Visit.h"

#include <QStringList>

/// The one record of the current visit. Filled once from the launch string; afterwards only `Etc`
/// changes.
struct VisitContextRecord
{
    QString LaunchCode;     ///< Kept as launched.
    QString LaunchFlag;     ///< Kept as launched.
    QString Chart;          ///< Chart number, eight columns.
    QString Yuhyung;        ///< Patient type code.
    QString Jinchal;        ///< Examining doctor's code.
    QString Ymd;            ///< Visit date, `yyyymmdd`.
    bool YmdIsValid = true; ///< It can be the date of a visit; otherwise nothing is filed or altered.
    QString Etc;            ///< Examination section.
    QString CaptureDir;     ///< Year folder of the visit, with a backslash at its end; empty for a date that can't
                            ///< stand in a path.
    QString ImageExt;       ///< "jpg" or "bmp", without a point.
    QString CaExtra;        ///< Last value of the `ca` row; always empty.
};

/// What the operator is told of a visit whose date can't be one.
inline constexpr char16_t InvalidDateText[] = u"진료일자가 올바르지 않습니다.!! 확인하세요.";

extern VisitContextRecord VisitContext;
extern ClientSetupRecord ClientSetup;
extern SaupRecords SaupTable;

/// Extension of the pictures as the setup wants them: "jpg" or "bmp".
QString ImageExtOfSetup();
/// The sections of this client as the setup lists them, blanks around them included.
QStringList SectionsOfClient();
/// Where the setup wants the capture mark.
MarkTable MarkTableOfSetup();
/// The current visit in its present section.
Visit CurrentVisit();
/// The visit that the station was started for.
LaunchedVisit Launched();
/// Any visit, its files where the setup has them. Throws PlatformError for a date that leads out of the root.
Visit VisitOf(const QString& chart, const QString& yuhyung, const QString& ymd, const QString& etc);
