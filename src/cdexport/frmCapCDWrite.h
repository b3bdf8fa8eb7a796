#pragma once

#include "contracts/files.h"
#include "frame/forms.h"

class fpSpread;
class QComboBox;
class QLabel;
class QPoint;
class QPushButton;
class XPBurn;

/// "CD저장": the staging folder of the CD writer. What lies in that folder is the selection.
class frmCapCDWrite : public StationForm
{
    Q_OBJECT

public:
    static constexpr const char16_t* FormName = u"frmCapCDWrite";

    frmCapCDWrite();

    fpSpread& sprCDDrive() { return *m_sprCDDrive; }

protected:
    void Form_Load() override;
    bool event(QEvent* event) override;

private:
    void BuildControls();
    QPushButton* AddButton(const QString& name, const QString& caption, int left);

    void ListStagingArea(const QString& folder);
    void ShowEntries(const QList<FolderEntry>& entries);
    /// Lists the folder again when other names lie in it than are shown: the writer's window can empty it.
    void FollowStagingArea();
    /// Tells how much is chosen, and how much the medium takes where that is known.
    void ShowRoom();
    /// The drive that is shown is the one that is written to, where the setup lets sticks be written.
    void UseChosenDrive();
    /// Stops with a message, false then.
    bool IsReady();
    void FindFile();
    void AddFiles();
    void DeleteStagedFile();
    void StartBurning();
    /// Makes the pages that show the disc's pictures. False when the operator gives that up.
    bool AddIndex(XPBurn& burner);

    QComboBox* m_cmbCDList = nullptr;
    QLabel* m_lblStagingArea = nullptr;
    QLabel* m_lblRoom = nullptr;
    QPushButton* m_cmdStart = nullptr;
    fpSpread* m_sprCDDrive = nullptr;
    QString m_stagingPath; ///< Ends in a separator.
};

/// Brings up the screen of the CD writer, at that place when it isn't open yet. Without a CD drive it tells so and
/// stays away.
void OpenCdWriting(const QPoint& place);

/// The station closes: what is being written is brought to an end first, and the operator is told. `screen` is the one
/// that closes; it isn't shown any more while that takes its time.
void FinishCdWriting(QWidget& screen);
