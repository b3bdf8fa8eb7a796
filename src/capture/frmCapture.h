#pragma once

#include "capture/CaptureDeletion.h"
#include "capture/CaptureHistory.h"
#include "capture/DateRefusal.h"
#include "capture/FootSwitch.h"
#include "capture/FullPicture.h"
#include "capture/LargeLook.h"
#include "capture/MovieRecording.h"
#include "capture/PictureImport.h"
#include "capture/StillCapture.h"
#include "capture/VisitNote.h"
#include "frame/forms.h"

#include <array>
#include <functional>
#include <memory>

class CommandBar;
class FilingNotices;
class fpSpread;
class ImagXpress;
class MeantPictures;
class MovieFiling;
class MSComm;
class NoteBox;
class NoticeStrip;
class PacsHandover;
class StationLease;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class StatusPanels;
class VideoCap;
class VisitPictures;

/// "캡쳐화면": the station's main screen, shown for one visit. Closing it ends the program.
class frmCapture : public StationForm
{
    Q_OBJECT

public:
    static constexpr const char16_t* FormName = u"frmCapture";

    frmCapture();
    ~frmCapture() override;

    /// Takes the frame of this moment and files it. Throws PlatformError with the reason why it can't; `filed` hears
    /// what became of it otherwise.
    void SetCaptureValues(const StillCapture::Filed& filed, PictureOrigin origin = PictureOrigin::Press);
    /// Empties the three grids; the labels and the note stay.
    void Clear();

    /// Fills the screen for the visit and section as they stand: pictures, note, list of visits.
    void ShowStored();

    QComboBox& cmbEtc() { return *m_cmbEtc; }
    fpSpread& sprCap(int element) { return *m_sprCap[static_cast<size_t>(element - 1)]; }
    /// Of `sprCap(1)` or `sprCap(2)`.
    VisitPictures& PicturesOf(int gridNumber) { return m_history->PicturesOf(gridNumber); }
    NoteBox& txtCapChamgo() { return *m_txtCapChamgo; }
    VideoCap& capCapture() { return *m_capCapture; }
    StatusPanels& sbarCap() { return *m_sbarCap; }
    /// The live picture around the stills of this screen.
    Moments& PressMoments() { return m_stills->PressMoments(); }
    /// No picture is on its way to its rows and its thumbnail any more.
    bool StillsAreAtRest() const { return m_filing->IsAtRest() && m_grid->IsAtRest(); }

protected:
    void Form_Load() override;
    void Form_Unload() override;
    bool EndsProgram() const override { return true; }

private:
    void BuildControls();
    void BuildCommands();
    void BuildPopupMenu();
    void ConnectControls();
    void ConnectPacs();
    void LoadSteps();
    void ShowCount(int pictures);
    void OfferNote(bool isThere);
    void PrepareFolders();
    /// Gives the last files the time to come to the share.
    void FinishMovies();
    void ShowUnknownPatient();
    /// The command, refused while the visit's date can't be one.
    std::function<void()> OnlyWithDate(const std::function<void()>& command);

    /// Prints the pictures of grid 1, or the ticked ones of grid 2, on a sheet.
    void PrintGridCaptures(int gridNumber);
    void Connect();
    void OpenFindingsScreen(int gridNumber);

    void OnGridDblClick(int element, int column, int row);
    void OnGridRightClick(int element, int column, int row, int x, int y);
    void OnSectionChosen();

    CommandBar* m_tbarCap = nullptr;
    StatusPanels* m_sbarCap = nullptr;
    VideoCap* m_capCapture = nullptr;
    NoticeStrip* m_notices = nullptr;
    QLabel* m_count = nullptr; ///< How many of the visit's pictures are taken.
    std::unique_ptr<FullPicture> m_fullPicture;
    std::unique_ptr<LargeLook> m_large;
    MSComm* m_commCapture = nullptr;
    std::array<fpSpread*, 3> m_sprCap = {};
    std::unique_ptr<VisitPictures> m_visitPictures;
    std::unique_ptr<VisitPictures> m_historyPictures;
    QLineEdit* m_dtpYmd = nullptr;
    QComboBox* m_cmbEtc = nullptr;
    NoteBox* m_txtCapChamgo = nullptr;
    QLabel* m_lblMovie = nullptr;
    QLabel* m_lblMovieStatus = nullptr;
    QLabel* m_lblHisYmd = nullptr;
    QLabel* m_lblHisEtc = nullptr;
    QMenu* m_popup = nullptr;
    ImagXpress* m_picture1 = nullptr; ///< Never shown: carries pictures to the printed page and from foreign files.

    std::unique_ptr<DateRefusal> m_dateRefusal;
    std::unique_ptr<VisitNote> m_note;
    std::unique_ptr<PacsHandover> m_pacs; ///< Null without a server in the setup.
    std::unique_ptr<StillFiling> m_filing;
    std::unique_ptr<VisitGrid> m_grid;
    std::unique_ptr<StillCapture> m_stills;
    std::unique_ptr<CaptureHistory> m_history;
    std::unique_ptr<MeantPictures> m_meant;
    std::unique_ptr<CaptureDeletion> m_deletion;
    std::unique_ptr<PictureImport> m_import;
    std::unique_ptr<FootSwitch> m_footSwitch;
    std::unique_ptr<MovieFiling> m_movies;
    std::unique_ptr<StationLease> m_lease; ///< Null for a visit whose date can't be one.
    std::unique_ptr<MovieRecording> m_movie;
    std::unique_ptr<FilingNotices> m_filingNotices;
};
