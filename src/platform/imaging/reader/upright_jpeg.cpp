#include "platform/imaging/reader/upright_jpeg.h"

#include "platform/imaging/jpeg_file.h"
#include "platform/imaging/picture_content.h"

#include "platform/imaging/reader/MappedPicture.h"

#include <memory>
#include <turbojpeg.h>

namespace {

constexpr int Quality = 95;

int OperationOf(QImageIOHandler::Transformations turn)
{
    using Turn = QImageIOHandler::Transformation;
    switch (turn.toInt()) {
    case Turn::TransformationMirror:
        return TJXOP_HFLIP;
    case Turn::TransformationFlip:
        return TJXOP_VFLIP;
    case Turn::TransformationRotate180:
        return TJXOP_ROT180;
    case Turn::TransformationRotate90:
        return TJXOP_ROT90;
    case Turn::TransformationMirrorAndRotate90:
        return TJXOP_TRANSVERSE;
    case Turn::TransformationFlipAndRotate90:
        return TJXOP_TRANSPOSE;
    case Turn::TransformationRotate270:
        return TJXOP_ROT270;
    default:
        return TJXOP_NONE;
    }
}

/// Moves the coded blocks; empty where some would have to be cut.
QByteArray Moved(const QByteArray& content, int operation)
{
    const std::unique_ptr<void, int (*)(tjhandle)> transformer(tjInitTransform(), &tjDestroy);
    tjtransform transform = {};
    transform.op = operation;
    transform.options = TJXOPT_PERFECT | TJXOPT_COPYNONE;
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    const auto* source = reinterpret_cast<const unsigned char*>(content.constData());
    const bool isMoved =
        transformer != nullptr && tjTransform(transformer.get(), source, static_cast<unsigned long>(content.size()), 1,
                                              &bytes, &size, &transform, 0) == 0;
    const std::unique_ptr<unsigned char, void (*)(unsigned char*)> moved(bytes, &tjFree);
    return isMoved ? QByteArray(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(size)) : QByteArray();
}

} // namespace

std::optional<UprightJpeg> MakeUpright(int descriptor)
{
    MappedPicture file(descriptor);
    if (!file.IsThere())
        return {};
    const std::optional<picturecontent::Header> header = picturecontent::HeaderOf(file.Device());
    if (!header || !header->IsJpeg())
        return {};
    if (header->IsTooLarge())
        return UprightJpeg{.size = header->size, .large = true};
    // The lowest scale costs little more than reading the bits, and tells whether they are all there.
    constexpr int LowestScale = 1;
    const jpegfile::Decoded low = jpegfile::Decode(file.Content(), LowestScale);
    if (low.picture.isNull())
        return {};
    const bool isTurned = header->turn.testFlag(QImageIOHandler::TransformationRotate90);
    UprightJpeg upright{isTurned ? header->size.transposed() : header->size, {}, low.cut};
    const int operation = OperationOf(header->turn);
    if (operation == TJXOP_NONE || low.cut)
        return upright;
    upright.turned = Moved(file.Content(), operation);
    // It can't be turned whole in this process's memory.
    upright.large = upright.turned.isEmpty() && header->IsReduced();
    if (upright.large)
        return upright;
    if (upright.turned.isEmpty())
        upright.turned = jpegfile::Encode(picturecontent::Decode(*header, file.Content(), {}).picture, Quality);
    return upright.turned.isEmpty() ? std::nullopt : std::optional(upright);
}
