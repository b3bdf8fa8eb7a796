#include "records/capture_index.h"

#include "contracts/files.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "launch/context/VisitContext.h"
#include "records/capture_scheme.h"
#include "records/history_grids.h"
#include "records/NoteBox.h"
#include "records/picture_grid.h"
#include "records/Statement.h"

using namespace Qt::StringLiterals;

QList<int> StoredNumbers(const QString& chart, const QString& ymd, const QString& etc, NumberOrder order)
{
    Statement statement(u" SELECT * FROM cap ");
    statement.Quoted(u" WHERE cap_chart = '", chart)
        .Quoted(u" AND cap_ymd = '", ymd)
        .Quoted(u" AND cap_etc = '", etc)
        .Piece(u" AND cap_gubun = 'A' ");
    if (order == NumberOrder::Ascending)
        statement.Piece(u" ORDER BY cap_no ASC ");
    const auto rows = OpenRows(statement);
    QList<int> numbers;
    for (; !rows->Eof(); rows->MoveNext())
        numbers.append(FieldNumber(*rows, u"cap_no"_s));
    rows->Close();
    return numbers;
}

int LoadCaptureList(const QString& chart, const QString& /*yuhyung*/, const QString& ymd, const QString& captureDir,
                    const QString& etc, fpSpread& grid, int gridNumber, bool keepCursor)
{
    const QPointer<fpSpread> there(&grid);
    const int fill = grid.BeginFill();
    ClearPictureGrid(grid, gridNumber);

    const QList<int> numbers = StoredNumbers(chart, ymd, etc, NumberOrder::Ascending);
    QStringList paths;
    for (const int number : numbers)
        paths.append(PicturePath(captureDir, etc, chart, ymd, number, VisitContext.ImageExt));
    const QSize room = grid.CellPixels(PictureColumns(gridNumber).first(), 1);
    const std::unique_ptr<PictureBatch> batch = Pictures().LoadAll(paths, room);

    int result = 0;
    int placed = 0;
    for (int at = 0; at < numbers.size(); ++at) {
        const std::optional<QImage> picture = AwaitPicture(there, fill, *batch, at);
        if (!picture)
            return result;
        result = numbers[at];
        if (!PictureExists(paths[at]))
            continue;
        const auto [row, column] = PlaceAfter(placed++, gridNumber);
        PlacePicture(grid, row, column, *picture, result);
        if (!keepCursor)
            grid.SetActiveCell(1, row);
    }
    return result;
}

int NextCaptureNo(const QString& chart, const QString& /*yuhyung*/, const QString& ymd, const QString& /*captureDir*/,
                  const QString& etc)
{
    const auto rows = OpenRows(Statement(u" SELECT IFNULL(MAX(cap_no), 0) AS Maxno FROM cap ")
                                   .Quoted(u" WHERE cap_chart = '", chart)
                                   .Quoted(u" AND cap_ymd = '", ymd)
                                   .Quoted(u" AND cap_etc = '", etc)
                                   .Piece(u" AND cap_gubun = 'A' "));
    const int largest = HasRow(*rows) ? FieldNumber(*rows, u"maxno"_s) : 0;
    rows->Close();
    return largest;
}

QString StoredNote(const QString& chart, const QString& ymd, const QString& etc)
{
    const auto rows = OpenRows(Statement(u" SELECT ca_chamgo FROM ca ")
                                   .Quoted(u" WHERE ca_chart = '", chart)
                                   .Quoted(u" AND ca_ymd = '", ymd)
                                   .Quoted(u" AND ca_etc = '", etc)
                                   .Piece(u" AND ca_gubun = 'A' "));
    // Not null, if only empty, for a row without a note.
    const QString note = HasRow(*rows) ? u""_s + FieldText(*rows, u"ca_chamgo"_s) : QString();
    rows->Close();
    return note;
}

void LoadCaptureNote(const QString& chart, const QString& /*yuhyung*/, const QString& ymd,
                     const QString& /*captureDir*/, const QString& etc, NoteBox& box)
{
    box.BeginLoading(ymd, etc);
    try {
        box.SetLoadedNote(StoredNote(chart, ymd, etc));
    } catch (const PlatformError&) {
        box.FailLoading();
        throw;
    }
}

void LoadVisitHistory(const QString& chart, const QString& /*yuhyung*/, const QString& /*ymd*/,
                      const QString& /*captureDir*/, const QString& /*etc*/, const QString& kind)
{
    const HistoryGrids& grids = RegisteredHistoryGrids();
    if (!grids.pictures || !grids.visits)
        return;
    // Asked first: a database that doesn't answer leaves the screen as it was.
    const auto rows = OpenRows(Statement(u" SELECT * FROM ca ")
                                   .Quoted(u" WHERE ca_chart = '", chart)
                                   .Quoted(u" AND ca_gubun = '", kind)
                                   .Piece(u" ORDER BY ca_ymd DESC "));
    grids.pictures->BeginFill();
    ClearPictureGrid(*grids.pictures, 2);
    fpSpread& visits = *grids.visits;
    visits.ClearRange(1, 1, 2, visits.DataRowCnt(), false);
    for (int line = 1; !rows->Eof(); rows->MoveNext(), ++line) {
        if (line > visits.MaxRows())
            visits.setMaxRows(line);
        visits.setRow(line);
        visits.setCol(1);
        visits.setText(FieldText(*rows, u"ca_ymd"_s));
        visits.setCol(2);
        visits.setText(FieldText(*rows, u"ca_etc"_s));
        visits.setCol(3);
        visits.setText(FieldText(*rows, u"ca_chamgo"_s));
    }
    rows->Close();
}
