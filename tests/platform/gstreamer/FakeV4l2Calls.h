#pragma once

#include "platform/gstreamer/devices/V4l2Calls.h"

#include <linux/videodev2.h>

#include <QMap>
#include <QStringList>

#include <cerrno>
#include <cstring>
#include <memory>

/// Cameras as tests invent them, answering as drivers do.
struct FakeCamera
{
    struct Size
    {
        int width;
        int height;
        QList<int> rates; ///< Whole frames per second; none: the driver names no rates.
    };
    struct Format
    {
        quint32 fourcc;
        QList<Size> sizes; ///< None: the driver lists no sizes.
    };

    QString card;
    QString bus;
    QList<Format> formats;
    QStringList inputs = {QStringLiteral("Camera 1")};
    QMap<quint32, v4l2_queryctrl> controls = {};
    bool isMetadataNode = false;
    bool isMultiPlanar = false;
    int openError = 0;
    bool isSizeRange = false; ///< The first size is the largest of a range.

    QMap<quint64, QString> standards = {};
    quint64 standard = 0;

    QMap<quint32, int> values = {};
    int input = 0;
    int inputError = 0;
    int timesOpened = 0;
    int openNow = 0;
};

class FakeV4l2Calls final : public V4l2Calls
{
public:
    using Cameras = QMap<QString, std::shared_ptr<FakeCamera>>;

    explicit FakeV4l2Calls(std::shared_ptr<Cameras> cameras) : m_cameras(std::move(cameras)) {}

    QList<V4l2Node> Nodes() const override
    {
        QList<V4l2Node> nodes;
        for (auto camera = m_cameras->begin(); camera != m_cameras->end(); ++camera)
            nodes.append({camera.key(), qint64(reinterpret_cast<quintptr>(camera.value().get()))});
        return nodes;
    }

    int Open(const QString& path) override
    {
        const std::shared_ptr<FakeCamera> camera = m_cameras->value(path);
        if (!camera)
            return -ENODEV;
        if (camera->openError != 0)
            return -camera->openError;
        ++camera->timesOpened;
        ++camera->openNow;
        m_open.insert(++m_lastDescriptor, camera);
        return m_lastDescriptor;
    }

    void Close(int descriptor) override { --m_open.take(descriptor)->openNow; }

    int Request(int descriptor, unsigned long request, void* argument) override
    {
        FakeCamera& camera = *m_open.value(descriptor);
        switch (request) {
        case VIDIOC_QUERYCAP:
            return QueryCapability(camera, *static_cast<v4l2_capability*>(argument));
        case VIDIOC_ENUM_FMT:
            return EnumFormat(camera, *static_cast<v4l2_fmtdesc*>(argument));
        case VIDIOC_ENUM_FRAMESIZES:
            return EnumSize(camera, *static_cast<v4l2_frmsizeenum*>(argument));
        case VIDIOC_ENUM_FRAMEINTERVALS:
            return EnumRate(camera, *static_cast<v4l2_frmivalenum*>(argument));
        case VIDIOC_G_FMT:
            static_cast<v4l2_format*>(argument)->fmt.pix.width = 720;
            static_cast<v4l2_format*>(argument)->fmt.pix.height = 576;
            return 0;
        case VIDIOC_ENUMINPUT:
            return EnumInput(camera, *static_cast<v4l2_input*>(argument));
        case VIDIOC_G_INPUT:
            *static_cast<int*>(argument) = camera.input;
            return 0;
        case VIDIOC_S_INPUT:
            if (camera.inputError != 0)
                return -camera.inputError;
            camera.input = *static_cast<int*>(argument);
            return 0;
        case VIDIOC_ENUMSTD:
            return EnumStandard(camera, *static_cast<v4l2_standard*>(argument));
        case VIDIOC_G_STD:
            *static_cast<v4l2_std_id*>(argument) = camera.standard;
            return camera.standard != 0 ? 0 : -ENOTTY;
        case VIDIOC_S_STD:
            camera.standard = *static_cast<v4l2_std_id*>(argument);
            return 0;
        case VIDIOC_QUERYCTRL:
            return QueryControl(camera, *static_cast<v4l2_queryctrl*>(argument));
        case VIDIOC_G_CTRL:
            static_cast<v4l2_control*>(argument)->value = camera.values.value(static_cast<v4l2_control*>(argument)->id);
            return 0;
        case VIDIOC_S_CTRL:
            camera.values[static_cast<v4l2_control*>(argument)->id] = static_cast<v4l2_control*>(argument)->value;
            return 0;
        default:
            return -ENOTTY;
        }
    }

private:
    template <std::size_t Length>
    static void Put(__u8 (&field)[Length], const QString& text)
    {
        std::strncpy(reinterpret_cast<char*>(field), text.toUtf8().constData(), Length - 1);
    }

    static int QueryCapability(const FakeCamera& camera, v4l2_capability& capability)
    {
        Put(capability.card, camera.card);
        Put(capability.bus_info, camera.bus);
        // Both nodes of a camera name what the whole device can; only device_caps tells them apart.
        const __u32 capture = camera.isMultiPlanar ? V4L2_CAP_VIDEO_CAPTURE_MPLANE : V4L2_CAP_VIDEO_CAPTURE;
        capability.capabilities = capture | V4L2_CAP_STREAMING | V4L2_CAP_DEVICE_CAPS;
        capability.device_caps = V4L2_CAP_STREAMING | (camera.isMetadataNode ? V4L2_CAP_META_CAPTURE : capture);
        return 0;
    }

    static const FakeCamera::Format* FindFormat(const FakeCamera& camera, quint32 fourcc)
    {
        for (const FakeCamera::Format& format : camera.formats)
            if (format.fourcc == fourcc)
                return &format;
        return nullptr;
    }

    static int EnumFormat(const FakeCamera& camera, v4l2_fmtdesc& format)
    {
        const bool isOfThisKind =
            format.type == (camera.isMultiPlanar ? V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE : V4L2_BUF_TYPE_VIDEO_CAPTURE);
        if (!isOfThisKind || qsizetype(format.index) >= camera.formats.size())
            return -EINVAL;
        format.pixelformat = camera.formats[format.index].fourcc;
        return 0;
    }

    static int EnumSize(const FakeCamera& camera, v4l2_frmsizeenum& size)
    {
        const FakeCamera::Format* format = FindFormat(camera, size.pixel_format);
        if (format == nullptr || qsizetype(size.index) >= format->sizes.size())
            return -EINVAL;
        const FakeCamera::Size& listed = format->sizes[size.index];
        if (camera.isSizeRange) {
            size.type = V4L2_FRMSIZE_TYPE_STEPWISE;
            size.stepwise = {32, __u32(listed.width), 16, 32, __u32(listed.height), 4};
            return 0;
        }
        size.type = V4L2_FRMSIZE_TYPE_DISCRETE;
        size.discrete = {__u32(listed.width), __u32(listed.height)};
        return 0;
    }

    static int EnumRate(const FakeCamera& camera, v4l2_frmivalenum& interval)
    {
        const FakeCamera::Format* format = FindFormat(camera, interval.pixel_format);
        for (const FakeCamera::Size& size : format->sizes) {
            const bool fits =
                camera.isSizeRange || (size.width == int(interval.width) && size.height == int(interval.height));
            if (!fits || qsizetype(interval.index) >= size.rates.size())
                continue;
            interval.type = V4L2_FRMIVAL_TYPE_DISCRETE;
            interval.discrete = {1, __u32(size.rates[interval.index])};
            return 0;
        }
        return -EINVAL;
    }

    static int EnumInput(const FakeCamera& camera, v4l2_input& input)
    {
        if (qsizetype(input.index) >= camera.inputs.size())
            return -EINVAL;
        Put(input.name, camera.inputs[input.index]);
        return 0;
    }

    static int EnumStandard(const FakeCamera& camera, v4l2_standard& standard)
    {
        if (qsizetype(standard.index) >= camera.standards.size())
            return -EINVAL;
        standard.id = camera.standards.keys().at(standard.index);
        Put(standard.name, camera.standards.value(standard.id));
        return 0;
    }

    static int QueryControl(const FakeCamera& camera, v4l2_queryctrl& query)
    {
        const quint32 id = query.id & ~V4L2_CTRL_FLAG_NEXT_CTRL;
        const auto next =
            (query.id & V4L2_CTRL_FLAG_NEXT_CTRL) != 0 ? camera.controls.upperBound(id) : camera.controls.find(id);
        if (next == camera.controls.end())
            return -EINVAL;
        query = next.value();
        query.id = next.key();
        return 0;
    }

    std::shared_ptr<Cameras> m_cameras;
    QMap<int, std::shared_ptr<FakeCamera>> m_open;
    int m_lastDescriptor = 100;
};
