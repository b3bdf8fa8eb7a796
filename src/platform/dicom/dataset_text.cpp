#include "platform/dicom/dataset_text.h"

#include "contracts/dicom_uids.h"
#include "platform/dicom/jpeg_frame.h"

#include <QDate>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

constexpr char16_t EndoscopicImage[] = u"1.2.840.10008.5.1.4.1.1.77.1.1";
constexpr char16_t JpegBaseline[] = u"1.2.840.10008.1.2.4.50";
constexpr qsizetype LongestText = 64;      ///< Of a long string, and of a name's component group.
constexpr qsizetype LongestShortText = 16; ///< Of a short string.

QString Cut(const QString& text, qsizetype longest)
{
    QString cut = text.left(longest);
    if (!cut.isEmpty() && cut.back().isHighSurrogate())
        cut.chop(1);
    return cut;
}

QString Replaced(const QString& text, const QRegularExpression& separators, qsizetype longest)
{
    QString plain = text;
    plain.replace(separators, u" "_s);
    return Cut(plain.simplified(), longest).trimmed();
}

QString DateText(const QString& ymd)
{
    const QString text = ymd.trimmed();
    return QDate::fromString(text, u"yyyyMMdd"_s).isValid() ? text : QString();
}

class Dataset
{
public:
    void Text(const char* tag, const char* type, const QString& value)
    {
        m_text += QByteArray("(") + tag + ") " + type + " [" + value.toUtf8() + "]\n";
    }
    void Number(const char* tag, int value)
    {
        m_text += QByteArray("(") + tag + ") US " + QByteArray::number(value) + '\n';
    }
    void Lines(const QByteArray& lines) { m_text += lines; }

    const QByteArray& Content() const { return m_text; }

private:
    QByteArray m_text;
};

void AddVisit(Dataset& data, const DicomPicture& picture)
{
    data.Text("0008,0050", "SH", {});
    data.Text("0008,0060", "CS", u"ES"_s);
    data.Text("0008,0070", "LO", {});
    data.Text("0008,0080", "LO", HarmlessText(picture.institution, LongestText));
    data.Text("0008,0090", "PN", {});
    data.Text("0008,1030", "LO", HarmlessText(picture.section, LongestText));
    data.Text("0008,1050", "PN", HarmlessName(picture.doctor));
    data.Text("0010,0010", "PN", HarmlessName(picture.patientName));
    data.Text("0010,0020", "LO", HarmlessText(picture.chart, LongestText));
    data.Text("0010,0030", "DA", DateText(picture.birthDate));
    data.Text("0010,0040", "CS", picture.sex == u"M" || picture.sex == u"F" ? picture.sex : QString());
    data.Text("0020,000d", "UI", StudyUid(picture));
    data.Text("0020,000e", "UI", SeriesUid(picture));
    // A directory needs one that isn't empty.
    data.Text("0020,0010", "SH", HarmlessText(picture.ymd, LongestShortText));
    data.Text("0020,0011", "IS", u"1"_s);
    data.Text("0020,0013", "IS", QString::number(picture.number));
    data.Text("0020,0020", "CS", {});
    data.Text("0020,0060", "CS", {});
}

void AddFrame(Dataset& data, const JpegFrame& frame, const QString& frameFile)
{
    const bool isGrey = frame.components == 1;
    data.Number("0028,0002", frame.components);
    // Whatever the file's sampling is: the standard knows no other word for coded luminance and chrominance here.
    data.Text("0028,0004", "CS", isGrey ? u"MONOCHROME2"_s : frame.isRgb ? u"RGB"_s : u"YBR_FULL_422"_s);
    if (!isGrey)
        data.Number("0028,0006", 0);
    data.Number("0028,0010", frame.rows);
    data.Number("0028,0011", frame.columns);
    data.Number("0028,0100", 8);
    data.Number("0028,0101", 8);
    data.Number("0028,0102", 7);
    data.Number("0028,0103", 0);
    data.Text("0028,2110", "CS", u"01"_s);
    const double ratio = double(frame.rows) * frame.columns * frame.components / double(frame.coded.size());
    data.Text("0028,2112", "DS", QString::number(ratio, 'f', 2));
    data.Text("0028,2114", "CS", u"ISO_10918_1"_s);
    data.Lines("(0040,0555) SQ (Sequence with explicit length #=0)\n"
               "(fffe,e0dd) na\n"
               "(7fe0,0010) OB (PixelSequence #=2)\n"
               "(fffe,e000) pi\n"
               "(fffe,e000) pi =" +
               frameFile.toUtf8() + "\n(fffe,e0dd) na\n");
}

} // namespace

QString HarmlessText(const QString& text, qsizetype longest)
{
    static const QRegularExpression separators(uR"([\p{C}\\])"_s);
    return Replaced(text, separators, longest);
}

QString HarmlessName(const QString& name)
{
    static const QRegularExpression separators(uR"([\p{C}\\^=])"_s);
    return Replaced(name, separators, LongestText);
}

QByteArray DatasetText(const DicomPicture& picture, const QString& instanceUid, const JpegFrame& frame,
                       const QString& frameFile)
{
    const QString sopClass = QString::fromUtf16(EndoscopicImage);
    Dataset data;
    data.Text("0002,0002", "UI", sopClass);
    data.Text("0002,0003", "UI", instanceUid);
    data.Text("0002,0010", "UI", QString::fromUtf16(JpegBaseline));
    data.Text("0008,0005", "CS", u"ISO_IR 192"_s);
    data.Text("0008,0008", "CS", uR"(ORIGINAL\PRIMARY)"_s);
    data.Text("0008,0016", "UI", sopClass);
    data.Text("0008,0018", "UI", instanceUid);
    data.Text("0008,0020", "DA", DateText(picture.ymd));
    data.Text("0008,0023", "DA", picture.takenAt.toString(u"yyyyMMdd"_s));
    // The visit has a date, but no time: its pictures must agree in what they say of it.
    data.Text("0008,0030", "TM", {});
    data.Text("0008,0033", "TM", picture.takenAt.toString(u"HHmmss"_s));
    AddVisit(data, picture);
    AddFrame(data, frame, frameFile);
    return data.Content();
}
