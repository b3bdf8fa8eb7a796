#pragma once

#include "frame/forms.h"

#include <memory>

class fpSpread;
class ImagXpress;
class LargePicture;
class MarkedPicturesAlone;
class NoticeStrip;
class PacsHandover;
class QLabel;
class QMenu;
class StatusPanels;
class VisitPictures;

/// "캡쳐이미지 ": the pictures of one visit, to look at, mark up and print. Closing it ends the program.
class CapShow : public StationForm
{
    Q_OBJECT

public:
    static constexpr const char16_t* FormName = u"CapShow";

    CapShow();
    ~CapShow() override;

    fpSpread& sprCap() { return *m_sprCap; }
    VisitPictures& PicturesOfVisit() { return *m_pictures; }

protected:
    void Form_Load() override;
    void Form_Unload() override;
    bool EndsProgram() const override { return true; }

private:
    void BuildControls();
    void BuildNotices();
    void ConnectPacs();
    void LayOutGrid();
    void OpenEditorFromCell(int column, int row);
    void PrintShownCaptures();

    StatusPanels* m_sbarCap = nullptr;
    fpSpread* m_sprCap = nullptr;
    ImagXpress* m_picture1 = nullptr;
    QLabel* m_lblYmd = nullptr;
    QLabel* m_lblEtc = nullptr;
    QMenu* m_popup = nullptr;
    LargePicture* m_large = nullptr;
    NoticeStrip* m_notices = nullptr;
    std::unique_ptr<VisitPictures> m_pictures;
    std::unique_ptr<MarkedPicturesAlone> m_marked; ///< Null until a picture is marked up.
    std::unique_ptr<PacsHandover> m_pacs;          ///< Null without a server in the setup.
};
