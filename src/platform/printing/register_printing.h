#pragma once

/// Installs `Printer()` with its options, and the page canvas.
void RegisterPrinting();
