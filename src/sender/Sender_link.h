#pragma once

#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "sender/Sender.h"

#include <QPointer>

#include <utility>

template <class Work, class Then>
void Sender::OnLink(Work work, Then then)
{
    m_isSending = true;
    m_linkSince.start();
    m_link.Post([self = QPointer(this), kit = m_kit, batch = m_batch, work = std::move(work), then = std::move(then)] {
        QString fault;
        std::invoke_result_t<Work, DicomKit&> result;
        try {
            if (*kit == nullptr)
                *kit = CreateObject<DicomKit>(QString::fromUtf16(DicomKitName));
            result = work(**kit);
        } catch (const PlatformError& error) {
            fault = error.Text();
        }
        PostToScreen([self, batch, then, result, fault] {
            if (!self || self->m_batch != batch)
                return;
            self->m_isSending = false;
            self->Guard([&] {
                if (fault.isEmpty()) {
                    then(result);
                    return;
                }
                self->Pause(fault);
                self->EndBatch();
            });
        });
    });
}
