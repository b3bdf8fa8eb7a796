#include "platform/dicom/Dataset.h"

#include <QDate>
#include <QRegularExpression>

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

void Dataset::Prose(quint32 tag, const char* type, const QString& value, qsizetype longest)
{
    m_elements.append({tag, type, m_coder.Text(dicomtext::Harmless(value, longest))});
}

void Dataset::PartedName(quint32 tag, const QString& value)
{
    constexpr qsizetype Parts = 5;
    QStringList parts = value.split(u'^').first(qMin(Parts, value.count(u'^') + 1));
    for (QString& part : parts)
        part = dicomtext::HarmlessName(part, false);
    while (!parts.isEmpty() && parts.last().isEmpty())
        parts.removeLast();
    QString name = parts.join(u'^').left(dicomtext::LongestLong);
    if (!name.isEmpty() && name.back().isHighSurrogate())
        name.chop(1);
    m_elements.append({tag, "PN", m_coder.Name(name)});
}

void Dataset::Code(quint32 tag, const QString& value)
{
    static const QRegularExpression others(u"[^A-Z0-9_ ]"_s);
    QString code = value.toUpper();
    Plain(tag, "CS", code.remove(others).trimmed().left(dicomtext::LongestShort));
}

void Dataset::Coded(quint32 tag, const QString& value, const QString& scheme, const QString& meaning)
{
    Dataset code = Item();
    code.Short(0x0008'0100, value);
    code.Short(0x0008'0102, scheme);
    code.Long(0x0008'0104, meaning.trimmed().isEmpty() ? value : meaning);
    Sequence(tag, {code});
}

Dataset Dataset::Reference(const DicomReference& object) const
{
    Dataset reference = Item();
    reference.Plain(0x0008'1150, "UI", object.classUid);
    reference.Plain(0x0008'1155, "UI", object.uid);
    return reference;
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
