#include "platform/dicom/link/PictureObject.h"

#include "platform/dicom/link/MovieFile.h"
#include "platform/dicom/link_messages.h"

#include <QCborArray>

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcostrmb.h>
#include <dcmtk/dcmdata/dcpixel.h>
#include <dcmtk/dcmdata/dcpixseq.h>
#include <dcmtk/dcmdata/dcpxitem.h>
#include <dcmtk/dcmdata/dctk.h>

#include <algorithm>
#include <array>
#include <memory>

using dicomlink::Content;

namespace {

/// Beside the coded data: the elements, and what encapsulates.
constexpr qsizetype MostBeside = 1 << 20;

constexpr int DeepestItem = 8;

bool PutAll(DcmItem& target, const QCborArray& elements, int depth);

bool PutItems(DcmItem& target, const DcmTag& tag, const QCborArray& items, int depth)
{
    if (depth >= DeepestItem || target.insertEmptyElement(tag).bad())
        return false;
    for (const auto& elements : items) {
        DcmItem* item = nullptr;
        constexpr long Append = -2;
        if (target.findOrCreateSequenceItem(tag, item, Append).bad() || !PutAll(*item, elements.toArray(), depth + 1))
            return false;
    }
    return true;
}

bool PutBytes(DcmItem& dataset, const DcmTag& tag, const QByteArray& value)
{
    return dataset
        .putAndInsertUint8Array(tag, reinterpret_cast<const Uint8*>(value.constData()),
                                static_cast<unsigned long>(value.size()))
        .good();
}

bool Put(DcmItem& dataset, const DcmTag& tag, const QByteArray& value)
{
    constexpr std::array Texts{EVR_UI, EVR_SH, EVR_LO, EVR_PN, EVR_CS, EVR_DA, EVR_TM, EVR_IS,
                               EVR_DS, EVR_AE, EVR_AS, EVR_DT, EVR_LT, EVR_ST, EVR_UC, EVR_UT};
    switch (tag.getEVR()) {
    case EVR_OB:
        return PutBytes(dataset, tag, value);
    case EVR_US:
        return dataset.putAndInsertUint16(tag, value.toUShort()).good();
    case EVR_UL:
        return dataset.putAndInsertUint32(tag, value.toUInt()).good();
    case EVR_AT:
        return dataset
            .putAndInsertTagKey(
                tag, DcmTagKey(static_cast<Uint16>(value.toUInt() >> 16), static_cast<Uint16>(value.toUInt() & 0xFFFF)))
            .good();
    default:
        return std::ranges::find(Texts, tag.getEVR()) != Texts.end() &&
               dataset.putAndInsertString(tag, value.constData()).good();
    }
}

bool PutAll(DcmItem& target, const QCborArray& elements, int depth)
{
    for (const auto& each : elements) {
        const QCborArray element = each.toArray();
        const auto number = static_cast<Uint32>(element.at(0).toInteger());
        const DcmVR type(element.at(1).toByteArray().constData());
        const DcmTag tag(number >> 16, number & 0xFFFF, type);
        const bool isPut = type.getEVR() == EVR_SQ ? PutItems(target, tag, element.at(3).toArray(), depth)
                                                   : Put(target, tag, element.at(2).toByteArray());
        if (!isPut)
            return false;
    }
    return true;
}

using Sequence = std::unique_ptr<DcmPixelSequence>;

/// Of encapsulated pixel data with one frame, which needs no table of where each begins. Null when that has failed.
Sequence EmptySequence()
{
    auto sequence = std::make_unique<DcmPixelSequence>(DcmTag(DCM_PixelData, EVR_OB));
    auto table = std::make_unique<DcmPixelItem>(DcmTag(DCM_Item, EVR_OB));
    if (sequence->insert(table.get()).bad())
        return nullptr;
    static_cast<void>(table.release());
    return sequence;
}

bool PutSequence(DcmDataset& dataset, Sequence sequence, E_TransferSyntax syntax)
{
    auto pixels = std::make_unique<DcmPixelData>(DCM_PixelData);
    pixels->putOriginalRepresentation(syntax, nullptr, sequence.release());
    if (dataset.insert(pixels.get(), OFTrue).bad())
        return false;
    static_cast<void>(pixels.release());
    return true;
}

bool PutJpeg(DcmDataset& dataset, const QByteArray& jpeg)
{
    Sequence sequence = EmptySequence();
    DcmOffsetList offsets;
    auto* coded = reinterpret_cast<Uint8*>(const_cast<char*>(jpeg.constData())); // It is only read.
    constexpr Uint32 OneFragment = 0;
    return sequence != nullptr && !jpeg.isEmpty() &&
           sequence->storeCompressedFrame(offsets, coded, static_cast<Uint32>(jpeg.size()), OneFragment).good() &&
           PutSequence(dataset, std::move(sequence), EXS_JPEGProcess1);
}

bool PutMovie(DcmDataset& dataset, const QString& path)
{
    Sequence sequence = EmptySequence();
    std::unique_ptr<DcmPixelItem> movie = MovieItem(path);
    if (sequence == nullptr || movie == nullptr || sequence->insert(movie.get()).bad())
        return false;
    static_cast<void>(movie.release());
    return PutSequence(dataset, std::move(sequence), EXS_MPEG4HighProfileLevel4_1);
}

Content ContentOf(const QCborMap& request)
{
    return static_cast<Content>(request.value(dicomlink::ContentKey).toInteger());
}

} // namespace

bool pictureobject::PutElements(DcmItem& target, const QCborArray& elements)
{
    return PutAll(target, elements, 0);
}

bool pictureobject::Fill(DcmDataset& dataset, const QCborMap& request)
{
    if (!PutAll(dataset, request.value(dicomlink::ElementsKey).toArray(), 0))
        return false;
    const QByteArray bytes = request.value(dicomlink::FrameKey).toByteArray();
    switch (ContentOf(request)) {
    case Content::Nothing:
        return true;
    case Content::Jpeg:
        return PutJpeg(dataset, bytes);
    case Content::Pixels:
        return !bytes.isEmpty() && PutBytes(dataset, DcmTag(DCM_PixelData, EVR_OB), bytes);
    case Content::Document:
        return !bytes.isEmpty() && PutBytes(dataset, DcmTag(DCM_EncapsulatedDocument, EVR_OB), bytes);
    case Content::Movie:
        return PutMovie(dataset, request.value(dicomlink::PathKey).toString());
    }
    return false;
}

QByteArray pictureobject::FileContent(const QCborMap& request)
{
    const E_TransferSyntax syntax = ContentOf(request) == Content::Jpeg ? EXS_JPEGProcess1 : EXS_LittleEndianExplicit;
    DcmFileFormat file;
    if (!Fill(*file.getDataset(), request) || file.validateMetaInfo(syntax).bad())
        return {};
    QByteArray content(request.value(dicomlink::FrameKey).toByteArray().size() + MostBeside, Qt::Uninitialized);
    DcmOutputBufferStream stream(content.data(), content.size());
    file.transferInit();
    const OFCondition written = file.write(stream, syntax, EET_ExplicitLength, nullptr);
    file.transferEnd();
    void* begin = nullptr;
    offile_off_t bytes = 0;
    stream.flushBuffer(begin, bytes);
    if (written.bad() || begin != content.data())
        return {};
    content.truncate(bytes);
    return content;
}
