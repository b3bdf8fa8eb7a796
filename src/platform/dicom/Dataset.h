#pragma once

#include "platform/dicom/dicom_text.h"

#include <QCborArray>

/// An element of a data set.
struct DicomElement
{
    quint32 tag = 0;                       ///< Group in the upper half.
    QByteArray type;                       ///< Value representation, two letters.
    QByteArray value;                      ///< As it stands in an object but for padding; a number in decimal digits.
    QList<QList<DicomElement>> items = {}; ///< Of a sequence.
};

/// As link_messages.h has elements.
QCborArray CborOf(const QList<DicomElement>& elements);

/// Makes the elements of a data set in one character set. Texts may be any: what an element can't hold is made
/// harmless, and cut.
class Dataset
{
public:
    explicit Dataset(DicomCharacters characters) : m_characters(characters), m_coder(characters) {}

    /// Empty for a text that is no date.
    static QString Date(const QString& ymd);

    /// Of a text that has ASCII letters alone.
    static DicomElement Plain(const char* type, quint32 tag, const QString& value)
    {
        return {tag, type, value.toLatin1()};
    }
    void Plain(quint32 tag, const char* type, const QString& value) { m_elements.append(Plain(type, tag, value)); }
    void Long(quint32 tag, const QString& value);
    void Short(quint32 tag, const QString& value);
    /// Of the types ST and LT: one line of at most so many characters.
    void Prose(quint32 tag, const char* type, const QString& value, qsizetype longest);
    void Name(quint32 tag, const QString& value, bool hasParts);
    /// One whose parts are told already, with `^`.
    void PartedName(quint32 tag, const QString& value);
    /// Coded: what isn't a capital letter, a digit, a blank or "_" is left away.
    void Code(quint32 tag, const QString& value);
    void Number(quint32 tag, qint64 value, const char* type = "US")
    {
        m_elements.append({tag, type, QByteArray::number(value)});
    }
    /// Any bytes, of the types OB and OW.
    void Bytes(quint32 tag, const char* type, const QByteArray& value) { m_elements.append({tag, type, value}); }
    /// A sequence of items; of none, too.
    void Sequence(quint32 tag, const QList<Dataset>& items);
    /// One for an item, in the same character set.
    Dataset Item() const { return Dataset(m_characters); }
    /// A sequence of the one code.
    void Coded(quint32 tag, const QString& value, const QString& scheme, const QString& meaning);
    /// An item that names an object.
    Dataset Reference(const DicomReference& object) const;

    const QList<DicomElement>& Elements() const { return m_elements; }
    /// False behind a text with a letter that isn't in the set.
    bool IsWhole() const { return m_coder.IsWhole() && m_areItemsWhole; }

private:
    DicomCharacters m_characters;
    dicomtext::Coder m_coder;
    bool m_areItemsWhole = true;
    QList<DicomElement> m_elements;
};
