#include "platform/dicom/register_dicom.h"

#include "contracts/dicom.h"
#include "frame/components.h"
#include "platform/dicom/DcmtkKit.h"

void RegisterDicom()
{
    RegisterComponent<DicomKit>(QString::fromUtf16(DicomKitName), [] { return std::make_unique<DcmtkKit>(); });
}
