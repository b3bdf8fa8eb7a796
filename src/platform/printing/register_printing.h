#pragma once

/// Installs `Printer()` with its options and jobs, and the page canvas.
void RegisterPrinting();
