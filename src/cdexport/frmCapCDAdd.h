#pragma once

#include "frame/forms.h"
#include "visit/Visit.h"

#include <optional>

class fpSpread;
class QProgressBar;
class QTabWidget;
class StatusPanels;

/// "CD에 파일추가": the pictures and movies of the patient, to be copied into the staging folder of the CD writer.
class frmCapCDAdd : public StationForm
{
    Q_OBJECT

public:
    static constexpr const char16_t* FormName = u"frmCapCDAdd";

    frmCapCDAdd();

    fpSpread& sprCapList() { return *m_sprCapList; }
    fpSpread& sprImageList() { return *m_sprImageList; }
    fpSpread& sprMovieList() { return *m_sprMovieList; }
    QTabWidget& tabCapCD() { return *m_tabCapCD; }

protected:
    void Form_Load() override;
    void Form_Unload() override;

private:
    void BuildControls();
    void BuildLists();

    void ShowTab(int tab);
    void ListCdVisits();
    void ListVisitImages(int row);
    void FillImages(const QStringList& paths);
    void ListCdMovies();
    void StageSelection();

    /// Files to copy, step by step: a row of pictures, or a selected movie.
    QList<QStringList> ChosenImages();
    QList<QStringList> ChosenMovies();

    StatusPanels* m_sbarCap = nullptr;
    QTabWidget* m_tabCapCD = nullptr;
    fpSpread* m_sprCapList = nullptr;
    fpSpread* m_sprImageList = nullptr;
    fpSpread* m_sprMovieList = nullptr;
    QProgressBar* m_barCount = nullptr;
    QProgressBar* m_barMoving = nullptr;
    std::optional<Visit> m_imagesOf; ///< Whose pictures are listed.
    bool m_staging = false;
};
