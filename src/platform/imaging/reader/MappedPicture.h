#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QFile>

/// A file's content, mapped: it takes nothing of the memory that is left for the picture. Lives as long as this.
class MappedPicture
{
public:
    explicit MappedPicture(int descriptor)
    {
        if (!m_file.open(descriptor, QIODevice::ReadOnly))
            return;
        const uchar* bytes = m_file.map(0, m_file.size());
        if (bytes == nullptr)
            return;
        m_content = QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), m_file.size());
        m_buffer.setData(m_content);
        m_buffer.open(QIODevice::ReadOnly);
    }

    bool IsThere() const { return m_buffer.isOpen(); }
    const QByteArray& Content() const { return m_content; }
    QBuffer& Device() { return m_buffer; }

private:
    QFile m_file;
    QByteArray m_content;
    QBuffer m_buffer;
};
