#include "cdexport/frmCapCDAdd.h"

#include "cdexport/disc_objects.h"
#include "cdexport/file_origins.h"
#include "cdexport/file_rows.h"
#include "contracts/cd.h"
#include "contracts/fpSpread.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/services.h"
#include "records/acts.h"
#include "records/capture_index.h"
#include "screenparts/fill_routines.h"
#include "screenparts/picture_grid.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <QFileInfo>
#include <QProgressBar>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTabWidget>

using namespace Qt::StringLiterals;

namespace {

constexpr int TabImages = 0;
constexpr int MovieRows = 9999;
constexpr qsizetype ChartColumns = 8;

QStringList StoredPictures(const Visit& visit)
{
    QStringList paths;
    for (const int number : StoredNumbers(visit, NumberOrder::Ascending))
        paths << visit.PicturePath(number);
    return paths;
}

/// What a picture of the visit, or a movie of any, tells of its origin.
std::optional<file_origins::Origin> OriginOf(const QString& path, const std::optional<Visit>& imagesOf)
{
    const QString name = QFileInfo(NativePath(path)).fileName();
    if (imagesOf)
        return file_origins::Origin{imagesOf->chart, imagesOf->ymd, imagesOf->etc, imagesOf->PictureNumber(name)};
    static const QRegularExpression movie(uR"(^(.{8})(\d{8})(\d{3,5})\.)"_s);
    const QRegularExpressionMatch match = movie.match(name);
    if (!match.hasMatch())
        return std::nullopt;
    return file_origins::Origin{match.captured(1), match.captured(2), {}, match.captured(3).toInt()};
}

} // namespace

frmCapCDAdd::frmCapCDAdd() : StationForm(QString::fromUtf16(FormName))
{
    BuildControls();
}

void frmCapCDAdd::Form_Load()
{
    ShowPatientPanels(*m_sbarCap, CurrentVisit());
    m_tabCapCD->setCurrentIndex(TabImages);
    ListCdVisits();
}

void frmCapCDAdd::Form_Unload()
{
    m_sprImageList->BeginFill();
}

void frmCapCDAdd::ShowTab(int tab)
{
    if (tab == TabImages)
        ListCdVisits();
    else
        ListCdMovies();
}

void frmCapCDAdd::ListCdVisits()
{
    m_sprCapList->DeleteRows(1, m_sprCapList->DataRowCnt());
    const QList<VisitLine> lines = StoredVisits(VisitContext.Chart, u"A"_s);
    while (lines.size() > m_sprCapList->MaxRows())
        m_sprCapList->setMaxRows(m_sprCapList->MaxRows() * 2);
    for (int row = 1; row <= lines.size(); ++row)
        WriteVisitLine(*m_sprCapList, row, lines[row - 1]);
}

void frmCapCDAdd::ListVisitImages(int row)
{
    const QString ymd = m_sprCapList->TextAt(1, row).remove(u'-');
    const QString etc = Trim(m_sprCapList->TextAt(2, row));
    if (Trim(ymd).isEmpty() || etc.isEmpty())
        return;
    m_sprImageList->DeleteRows(1, m_sprImageList->MaxRows());
    const Visit visit = VisitOf(VisitContext.Chart, VisitContext.Yuhyung, ymd, etc);
    const QStringList paths = StoredPictures(visit);
    m_imagesOf = visit;
    acts::Record(acts::Kind::HistoryOpened, visit, 0, u"CD저장"_s);
    FillImages(paths);
}

void frmCapCDAdd::FillImages(const QStringList& paths)
{
    fpSpread& grid = *m_sprImageList;
    const int fill = grid.BeginFill();
    const std::unique_ptr<PictureBatch> batch = Pictures().LoadAll(paths, grid.CellPixels(1, 1));
    int row = 1;
    int column = 0;
    PlacePictures(&grid, fill, *batch, paths, [&](int at, const QImage& picture) {
        if (++column > grid.MaxCols()) {
            column = 1;
            ++row;
        }
        if (row > grid.MaxRows())
            grid.setMaxRows(row);
        ShowPicture(grid, row, column, picture);
        grid.setText(paths[at]);
    });
}

void frmCapCDAdd::ListCdMovies()
{
    const QString folder = MovieFolder(VisitContext.CaptureDir);
    if (VisitContext.CaptureDir.isEmpty() || !FolderExists(folder))
        return;
    m_sprMovieList->DeleteRows(1, m_sprMovieList->DataRowCnt());
    m_sprMovieList->setMaxRows(MovieRows);
    int row = 0;
    const auto shown = qScopeGuard([&] { m_sprMovieList->setMaxRows(row); });
    try {
        const QList<FolderEntry> entries = Files().Entries(folder);
        m_sprMovieList->setMaxRows(static_cast<int>(entries.size()));
        for (const FolderEntry& entry : entries) {
            if (entry.IsFolder || entry.Name.left(ChartColumns) != Trim(VisitContext.Chart))
                continue;
            WriteFileRow(*m_sprMovieList, ++row, entry);
            m_sprMovieList->setCol(5);
            m_sprMovieList->setText(folder + entry.Name);
        }
    } catch (const FilesAway&) {
        throw;
    } catch (const PlatformError&) {
        // The list stays as short as what could be read.
    }
}

QList<QStringList> frmCapCDAdd::ChosenImages()
{
    QList<QStringList> steps;
    for (int row = 1; row <= m_sprImageList->MaxRows(); ++row) {
        QStringList paths;
        for (int column = 1; column <= m_sprImageList->MaxCols(); ++column) {
            const QString path = m_sprImageList->TextAt(column, row);
            if (m_sprImageList->IsCellSelected(column, row) && !path.isEmpty())
                paths << path;
        }
        steps << paths;
    }
    return steps;
}

QList<QStringList> frmCapCDAdd::ChosenMovies()
{
    QList<QStringList> steps;
    for (int index = 0; index < m_sprMovieList->SelectionCount(); ++index) {
        const int row = m_sprMovieList->GetSelection(index).Row;
        QStringList paths;
        if (!Trim(m_sprMovieList->TextAt(1, row)).isEmpty())
            paths << m_sprMovieList->TextAt(5, row);
        steps << paths;
    }
    return steps;
}

void frmCapCDAdd::StageSelection()
{
    if (m_staging)
        return;
    m_barCount->setValue(0);
    m_barMoving->setValue(0);
    const bool images = m_tabCapCD->currentIndex() == TabImages;
    if ((images ? m_sprImageList : m_sprMovieList)->SelectionCount() < 1) {
        ShowInformation(u"추가할 자료가 없습니다.!!"_s);
        return;
    }
    // Read whole before anything is pumped: the lists may be filled again meanwhile.
    const QList<QStringList> steps = images ? ChosenImages() : ChosenMovies();
    const auto burner = CreateObject<XPBurn>(u"BaydenBurn.XPBurn"_s);
    if (!burner->Equipped()) {
        ShowInformation(u"CD저장 준비가 되어있지 않습니다.!!"_s);
        return;
    }
    const QString area = burner->burnArea();
    const std::optional<Visit> imagesOf = images ? m_imagesOf : std::nullopt;
    const std::optional<Visit> visit = images && ClientSetup.BurnerDicom ? m_imagesOf : std::nullopt;
    const bool isNone = std::ranges::all_of(steps, &QStringList::isEmpty);
    const DicomPicture facts =
        visit && !isNone ? disc_objects::FactsOf(*visit, steps.first().value(0)) : DicomPicture();
    QStringList problems;
    const auto kit = CreateObject<clsDeskKit>(u"prjDeskKit.clsDeskKit"_s);

    m_staging = true;
    const auto end = qScopeGuard([this] { m_staging = false; });
    for (qsizetype done = 0; done < steps.size(); ++done) {
        PumpEvents();
        for (const QString& path : steps[done]) {
            if (IsUnloaded())
                return;
            // A picture may have been deleted since it was listed.
            if (images && !PictureExists(path))
                continue;
            const std::optional<file_origins::Origin> origin =
                ClientSetup.BurnerIndex || ClientSetup.BurnerDicomPlain ? OriginOf(path, imagesOf) : std::nullopt;
            const QStringList before = origin ? file_origins::NamesIn(area) : QStringList();
            kit->FileCopyDialog(path, area + QFileInfo(NativePath(path)).fileName());
            if (origin)
                file_origins::Record(area, before, path, *origin);
            if (!visit)
                continue;
            const QString problem = disc_objects::Stage(area, path, *visit, facts);
            if (!problem.isEmpty())
                problems << problem;
        }
        m_barCount->setValue(qRound(100.0 * static_cast<double>(done + 1) / static_cast<double>(steps.size())));
    }
    if (!problems.isEmpty())
        ShowInformation(
            u"그림 %1장은 DICOM으로 바꾸지 못하고 그림 파일로만 추가하였습니다.!!\r\n%2"_s.arg(problems.size())
                .arg(problems.first()));
    Unload();
}
