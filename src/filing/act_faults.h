#pragma once

#include "contracts/PlatformError.h"

/// Runs a step on files. A fault of it tells first which of the operator's acts it has stopped; one that may pass
/// stays what it is.
template <class Step>
auto AsPartOf(const QString& failedAct, Step step)
{
    try {
        return step();
    } catch (const Away&) {
        throw;
    } catch (const StoredWithFault&) {
        throw;
    } catch (const PlatformError& error) {
        throw PlatformError(failedAct + QStringLiteral("\r\n") + error.Text());
    }
}
