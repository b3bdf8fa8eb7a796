#include "fuzz.h"
#include "platform/dicom/dicom_text.h"
#include "platform/dicom/link_answers.h"
#include "platform/dicom/link_outcomes.h"
#include "sender/services/worklist_choice.h"

#include <QCborMap>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// A text of a server that is shown, or goes into an object: one plain line.
void Check(const QString& text, qsizetype longest)
{
    const auto isNone = [](QChar letter) { return letter.category() == QChar::Other_Control || letter == u'\\'; };
    if (text.size() > longest || std::ranges::any_of(text, isNone))
        __builtin_trap();
}

void ReadTexts(const QByteArray& told)
{
    const qsizetype end = told.indexOf('\n');
    const QByteArray characters = told.left(end);
    const QByteArray value = end < 0 ? told : told.mid(end + 1);
    dicomtext::NameOf(value, characters);
    Check(dicomtext::PersonOf(value, characters), dicomtext::LongestLong);
    Check(dicomtext::TextOf(value, characters), dicomtext::LongestLong);
}

void ReadAnswer(const QCborMap& answer)
{
    using peeranswers::Asked;
    for (const Asked asked : {Asked::Store, Asked::Report, Asked::Movie, Asked::Rejection, Asked::Find, Asked::Echo}) {
        const QString reason = linkoutcomes::OfAnswer(answer, asked, DicomOutcome::Broken).reason;
        if (reason.size() > 200 || reason.contains(u'\n'))
            __builtin_trap();
    }
    linkanswers::TakenOf(answer);
    linkanswers::StudiesOf(answer, u"1.2.3"_s);
    linkanswers::PicturesOf(answer);
    linkanswers::ReportOf(answer);
    const QList<DicomScheduled> entries = linkanswers::ScheduledOf(answer, u"00012345"_s, u"20260105"_s);
    for (const DicomScheduled& entry : entries) {
        Check(entry.order.accession, dicomtext::LongestShort);
        Check(entry.order.procedureText, dicomtext::LongestLong);
        Check(entry.order.referring, dicomtext::LongestLong);
    }
    PacsSetupRecord setup;
    setup.WorklistCodes[u"EGD"_s] = u"위내시경"_s;
    FittingOffers(entries, u"위내시경"_s, DicomModality::Endoscopy, setup);
}

} // namespace

/// What the program of the connections has answered, which servers write into. The first byte says whether it is a
/// whole answer, or a text with its character set in a line above it.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray told = ContentOf(data, size).mid(1);
    QCborMap answer;
    if (size > 0 && (data[0] & 1) != 0)
        ReadTexts(told);
    else if (linkanswers::Read(told, answer))
        ReadAnswer(answer);
    return 0;
}
