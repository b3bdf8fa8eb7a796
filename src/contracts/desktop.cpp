#include "contracts/desktop.h"

#include "contracts/components.h"

void ShowInformation(const QString& text)
{
    UseService<Desktop>().ShowInformation(text);
}

bool AskYesNo(const QString& question)
{
    return UseService<Desktop>().AskYesNo(question);
}

void SetMousePointer(MousePointer pointer)
{
    UseService<Desktop>().SetMousePointer(pointer);
}

void PumpEvents()
{
    UseService<Desktop>().PumpEvents();
}

void EndProgram()
{
    UseService<Desktop>().EndProgram();
}
