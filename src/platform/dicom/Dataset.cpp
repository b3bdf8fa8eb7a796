#include "platform/dicom/Dataset.h"

#include <QDate>

using namespace Qt::StringLiterals;

QCborArray CborOf(const QList<DicomElement>& elements)
{
    QCborArray array;
    for (const DicomElement& element : elements) {
        QCborArray items;
        for (const QList<DicomElement>& item : element.items)
            items.append(CborOf(item));
        array.append(QCborArray{qint64(element.tag), element.type, element.value, items});
    }
    return array;
}

QString Dataset::Date(const QString& ymd)
{
    const QString text = ymd.trimmed();
    return QDate::fromString(text, u"yyyyMMdd"_s).isValid() ? text : QString();
}

void Dataset::Long(quint32 tag, const QString& value)
{
    m_elements.append({tag, "LO", m_coder.Text(dicomtext::Harmless(value, dicomtext::LongestLong))});
}

void Dataset::Short(quint32 tag, const QString& value)
{
    m_elements.append({tag, "SH", m_coder.Text(dicomtext::Harmless(value, dicomtext::LongestShort))});
}

void Dataset::Name(quint32 tag, const QString& value, bool hasParts)
{
    m_elements.append({tag, "PN", m_coder.Name(dicomtext::HarmlessName(value, hasParts))});
}

void Dataset::PartedName(quint32 tag, const QString& value)
{
    m_elements.append({tag, "PN", m_coder.Name(dicomtext::Harmless(value, dicomtext::LongestLong))});
}

void Dataset::Sequence(quint32 tag, const QList<Dataset>& items)
{
    DicomElement sequence{tag, "SQ", {}};
    for (const Dataset& item : items) {
        sequence.items.append(item.Elements());
        m_areItemsWhole = m_areItemsWhole && item.IsWhole();
    }
    m_elements.append(sequence);
}
