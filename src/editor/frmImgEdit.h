#pragma once

#include "editor/drawing_tools.h"
#include "editor/EditCanvas.h"
#include "frame/file_calls.h"
#include "frame/forms.h"
#include "records/picture_sums.h"

#include <array>
#include <functional>
#include <memory>

class QLabel;
class QToolButton;

/// Marks up one stored picture in place: a strip of tools over the canvas. The file is read while the form is put
/// together and painted, and shown once the form is.
class frmImgEdit : public StationForm
{
    Q_OBJECT

public:
    static constexpr char16_t FormName[] = u"frmImgEdit";
    static constexpr char16_t Caption[] = u"이미지편집";
    static constexpr int Tools = 6;

    frmImgEdit();

    /// The form for a picture that is to be marked up, whose file is read from here on, while the form is made;
    /// `lblFilePath` shows its path.
    static frmImgEdit& Open(const QString& path);
    const QString& Path() const { return m_path; }
    /// Is called before the file is written for the first time, and may wait. What it throws refuses the writing.
    void setOriginalKeeper(const std::function<void()>& keep) { m_keepOriginal = keep; }
    EditCanvas& Canvas() { return m_canvas; }

Q_SIGNALS:
    /// The file has been written, and this is what it holds.
    void Saved(const PictureSum& sum, const QByteArray& version);

protected:
    void Form_Load() override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct OpenedFile
    {
        QByteArray version;
        QImage picture;
    };

    void BuildControls();
    void BuildTools(QWidget* strip);
    void ConnectControls();

    void ReadPicture();
    void Undo() { m_canvas.Undo(); }
    void Redo() { m_canvas.Redo(); }
    void Zoom(int step);
    void Fit() { m_canvas.Fit(); }
    void ShowView();
    void Save();
    /// The file isn't what was opened: false when the operator doesn't want his picture in its place.
    bool MayReplaceFile();
    void ShowFile();
    void Exit();
    void ShowChain();
    /// No command runs into a stroke.
    bool BeginCommand();

    void MarkToolButton(int tool);
    void ChooseColour();
    void ChooseFont();
    void setColour(int colour);

    QLabel* m_lblFilePath = nullptr;
    std::array<QToolButton*, Tools> m_cmdDMode{};
    QToolButton* m_cmdColor = nullptr;
    QToolButton* m_cmdFont = nullptr;
    QToolButton* m_cmdZoomIn = nullptr;
    QToolButton* m_cmdZoomOut = nullptr;
    QToolButton* m_cmdFit = nullptr;
    QToolButton* m_cmdUnDo = nullptr;
    QToolButton* m_cmdReDo = nullptr;
    QToolButton* m_cmdISave = nullptr;
    QToolButton* m_cmdIExit = nullptr;

    EditCanvas m_canvas{*this};
    QString m_path;
    std::unique_ptr<filecalls::BegunAsk<OpenedFile>> m_file; ///< Until it is shown.
    bool m_pictureRead = false;
    std::function<void()> m_keepOriginal; ///< Empty once it has been called.
    QByteArray m_openedVersion;           ///< Of the file, when it was read or written last.
};

/// Opens the editor on a picture, and returns when it is closed: true when it has written the file; `saved` hears of
/// each time, with the version of the file, `keepOriginal` before the first. Nothing happens without a path.
bool OpenPictureEditor(const QString& path, const std::function<void()>& keepOriginal,
                       const std::function<void(const PictureSum& sum, const QByteArray& version)>& saved);
