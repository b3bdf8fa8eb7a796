#include "platform/dicom/link/link_texts.h"

#include "platform/dicom/link_messages.h"

#include <cstring>

QByteArray linktexts::Bounded(const char* text)
{
    return text == nullptr ? QByteArray()
                           : QByteArray(text, static_cast<qsizetype>(qstrnlen(text, dicomlink::LongestText)));
}

void linktexts::Copy(char* target, size_t size, const QByteArray& text)
{
    std::strncpy(target, text.constData(), size - 1);
    target[size - 1] = '\0';
}
