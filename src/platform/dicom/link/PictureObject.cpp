#include "platform/dicom/link/PictureObject.h"

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcostrmb.h>
#include <dcmtk/dcmdata/dcpixel.h>
#include <dcmtk/dcmdata/dcpixseq.h>
#include <dcmtk/dcmdata/dcpxitem.h>
#include <dcmtk/dcmdata/dctk.h>

#include <algorithm>
#include <array>
#include <memory>

namespace {

/// Beside the coded data: the elements, and what encapsulates.
constexpr qsizetype MostBeside = 1 << 20;

constexpr int DeepestItem = 8;

bool PutAll(DcmItem& target, const QCborArray& elements, int depth);

bool PutItems(DcmItem& target, const DcmTag& tag, const QCborArray& items, int depth)
{
    if (depth >= DeepestItem || target.insertEmptyElement(tag).bad())
        return false;
    for (qsizetype at = 0; at < items.size(); ++at) {
        DcmItem* item = nullptr;
        constexpr long Append = -2;
        if (target.findOrCreateSequenceItem(tag, item, Append).bad() ||
            !PutAll(*item, items.at(at).toArray(), depth + 1))
            return false;
    }
    return true;
}

bool Put(DcmItem& dataset, const DcmTag& tag, const QByteArray& value)
{
    constexpr std::array Texts{EVR_UI, EVR_SH, EVR_LO, EVR_PN, EVR_CS, EVR_DA, EVR_TM, EVR_IS, EVR_DS, EVR_AE};
    if (tag.getEVR() == EVR_OB)
        return dataset
            .putAndInsertUint8Array(tag, reinterpret_cast<const Uint8*>(value.constData()),
                                    static_cast<unsigned long>(value.size()))
            .good();
    if (tag.getEVR() == EVR_US)
        return dataset.putAndInsertUint16(tag, value.toUShort()).good();
    return std::ranges::find(Texts, tag.getEVR()) != Texts.end() &&
           dataset.putAndInsertString(tag, value.constData()).good();
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

bool PutFrame(DcmDataset& dataset, const QByteArray& frame)
{
    auto sequence = std::make_unique<DcmPixelSequence>(DcmTag(DCM_PixelData, EVR_OB));
    // One frame needs no table of where each begins.
    auto table = std::make_unique<DcmPixelItem>(DcmTag(DCM_Item, EVR_OB));
    if (sequence->insert(table.get()).bad())
        return false;
    static_cast<void>(table.release());
    DcmOffsetList offsets;
    auto* coded = reinterpret_cast<Uint8*>(const_cast<char*>(frame.constData())); // It is only read.
    constexpr Uint32 OneFragment = 0;
    if (sequence->storeCompressedFrame(offsets, coded, static_cast<Uint32>(frame.size()), OneFragment).bad())
        return false;
    auto pixels = std::make_unique<DcmPixelData>(DCM_PixelData);
    pixels->putOriginalRepresentation(EXS_JPEGProcess1, nullptr, sequence.release());
    if (dataset.insert(pixels.get(), OFTrue).bad())
        return false;
    static_cast<void>(pixels.release());
    return true;
}

} // namespace

bool pictureobject::PutElements(DcmItem& target, const QCborArray& elements)
{
    return PutAll(target, elements, 0);
}

bool pictureobject::Fill(DcmDataset& dataset, const QCborArray& elements, const QByteArray& frame)
{
    return PutAll(dataset, elements, 0) && !frame.isEmpty() && PutFrame(dataset, frame);
}

QByteArray pictureobject::FileContent(const QCborArray& elements, const QByteArray& frame)
{
    DcmFileFormat file;
    if (!Fill(*file.getDataset(), elements, frame) || file.validateMetaInfo(EXS_JPEGProcess1).bad())
        return {};
    QByteArray content(frame.size() + MostBeside, Qt::Uninitialized);
    DcmOutputBufferStream stream(content.data(), content.size());
    file.transferInit();
    const OFCondition written = file.write(stream, EXS_JPEGProcess1, EET_ExplicitLength, nullptr);
    file.transferEnd();
    void* begin = nullptr;
    offile_off_t bytes = 0;
    stream.flushBuffer(begin, bytes);
    if (written.bad() || begin != content.data())
        return {};
    content.truncate(bytes);
    return content;
}
