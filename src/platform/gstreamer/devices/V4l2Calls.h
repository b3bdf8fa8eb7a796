#pragma once

#include <QList>
#include <QString>

/// A video node of the machine. The stamp changes when another device takes the same path, or its access changes.
struct V4l2Node
{
    QString path;
    qint64 stamp = 0;

    bool operator==(const V4l2Node&) const = default;
};

/// The calls into the kernel that reach cameras and frame grabbers.
class V4l2Calls
{
public:
    virtual ~V4l2Calls() = default;

    /// By number.
    virtual QList<V4l2Node> Nodes() const = 0;
    /// A descriptor, or a negative errno.
    virtual int Open(const QString& path) = 0;
    virtual void Close(int descriptor) = 0;
    /// One ioctl: 0, or a negative errno. `argument` is the structure that belongs to the request.
    virtual int Request(int descriptor, unsigned long request, void* argument) = 0;
};

class KernelV4l2Calls final : public V4l2Calls
{
public:
    QList<V4l2Node> Nodes() const override;
    int Open(const QString& path) override;
    void Close(int descriptor) override;
    int Request(int descriptor, unsigned long request, void* argument) override;
};
