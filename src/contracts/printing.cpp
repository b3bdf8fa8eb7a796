#include "contracts/printing.h"

#include "contracts/components.h"

PrinterObject& Printer()
{
    return UseService<PrinterObject>();
}
