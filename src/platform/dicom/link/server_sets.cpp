#include "platform/dicom/link/server_sets.h"

#include "platform/dicom/link/link_texts.h"
#include "platform/dicom/link_messages.h"

#include <dcmtk/dcmdata/dctk.h>

using namespace dicomlink;

namespace {

constexpr int DeepestItem = 3;

/// All values of an element.
QByteArray ValuesOf(DcmItem& item, const DcmTagKey& tag)
{
    OFString text;
    if (item.findAndGetOFStringArray(tag, text).bad())
        return {};
    return linktexts::Bounded(text.c_str()).trimmed();
}

void AddReferences(DcmItem& set, const DcmTagKey& sequence, bool areFailed, QCborMap& report)
{
    QCborArray references;
    for (long at = 0; at < MostReported; ++at) {
        DcmItem* item = nullptr;
        if (set.findAndGetSequenceItem(sequence, item, at).bad() || item == nullptr)
            break;
        QCborArray reference{ValuesOf(*item, DCM_ReferencedSOPClassUID), ValuesOf(*item, DCM_ReferencedSOPInstanceUID)};
        Uint16 reason = 0;
        if (areFailed && item->findAndGetUint16(DCM_FailureReason, reason).good())
            reference.append(int(reason));
        references.append(reference);
    }
    report[areFailed ? FailedKey : CommittedKey] = references;
}

QCborArray ElementsWithin(DcmItem& item, int depth, int& left)
{
    QCborArray elements;
    for (unsigned long at = 0; at < item.card() && left > 0; ++at) {
        DcmElement* element = item.getElement(at);
        if (element == nullptr)
            continue;
        --left;
        const DcmTag tag = element->getTag();
        const qint64 number = qint64(tag.getGroup()) << 16 | tag.getElement();
        QCborArray items;
        QByteArray value;
        if (auto* sequence = dynamic_cast<DcmSequenceOfItems*>(element); sequence != nullptr) {
            for (unsigned long each = 0; depth < DeepestItem && each < sequence->card() && left > 0; ++each) {
                --left;
                items.append(ElementsWithin(*sequence->getItem(each), depth + 1, left));
            }
        } else {
            value = ValuesOf(item, tag.getXTag());
        }
        elements.append(QCborArray{number, QByteArray(DcmVR(element->getVR()).getVRName()), value, items});
    }
    return elements;
}

} // namespace

QByteArray serversets::TextOf(DcmItem* set, const DcmTagKey& tag)
{
    const char* text = nullptr;
    if (set == nullptr || set->findAndGetString(tag, text).bad())
        return {};
    return linktexts::Bounded(text).trimmed();
}

QCborArray serversets::MatchOf(DcmItem& found, bool isStudy)
{
    if (isStudy)
        return {TextOf(&found, DCM_StudyInstanceUID), TextOf(&found, DCM_PatientID), TextOf(&found, DCM_PatientName),
                TextOf(&found, DCM_SpecificCharacterSet)};
    return {TextOf(&found, DCM_SOPInstanceUID), TextOf(&found, DCM_InstanceNumber)};
}

QByteArray serversets::CommentOf(DcmItem* detail)
{
    if (detail == nullptr)
        return {};
    Uint16 error = 0;
    QByteArray comment;
    if (detail->findAndGetUint16(DCM_ErrorID, error).good() && error != 0)
        comment = QByteArray::number(error, 16).toUpper() + ' ';
    return (comment + TextOf(detail, DCM_ErrorComment)).trimmed();
}

void serversets::PutReport(DcmItem& set, QCborMap& report)
{
    report[TransactionKey] = ValuesOf(set, DCM_TransactionUID);
    AddReferences(set, DCM_ReferencedSOPSequence, false, report);
    AddReferences(set, DCM_FailedSOPSequence, true, report);
}

QCborArray serversets::ElementsOf(DcmItem& item)
{
    int left = MostElements;
    return ElementsWithin(item, 0, left);
}
