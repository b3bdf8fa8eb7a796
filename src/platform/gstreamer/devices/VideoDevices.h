#pragma once

#include "platform/gstreamer/devices/V4l2Calls.h"
#include "platform/gstreamer/devices/VideoMode.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <memory>

struct VideoDevice
{
    QString name; ///< Unlike all others of the list.
    QString card;
    QString bus;
    QString node; ///< Device file; the last one of a device that is gone.
    bool isTestPicture = false;
    bool isPresent = false;
    QList<VideoMode> modes; ///< The last known ones of a device that is gone.
    QStringList inputs;
    QStringList otherFormats{}; ///< That can't be shown.
};

/// The video devices of the machine, shared by all video controls.
///
/// A device keeps its position from its first listing to the end of the program. The first listing has the cameras by
/// number and the test picture last; a camera that comes later stands behind all that were listed before, the test
/// picture included. A camera that is plugged in again, even elsewhere, takes its old position.
class VideoDevices : public QObject
{
    Q_OBJECT

public:
    /// Changes of the folder are taken as devices that come or go; an empty name watches nothing.
    VideoDevices(std::unique_ptr<V4l2Calls> calls, const QString& watchedFolder);
    ~VideoDevices() override;

    void OfferTestPicture(bool offered);

    /// The devices as they are now.
    const QList<VideoDevice>& List();
    V4l2Calls& Calls() { return *m_calls; }

Q_SIGNALS:
    /// A device came or went.
    void Changed();

private:
    void LookAgain();
    void Refresh();
    bool RefreshCameras();
    bool RefreshTestPicture();
    void Welcome(const QString& node);
    VideoDevice* PlaceFor(const QString& card, const QString& bus);
    QString UniqueName(const QString& card) const;

    std::unique_ptr<V4l2Calls> m_calls;
    QList<V4l2Node> m_nodes;
    QList<VideoDevice> m_devices;
    bool m_isListed = false;
    bool m_isTestPictureOffered = false;
    QFileSystemWatcher m_watcher;
    QTimer m_settle;
};
