#pragma once

/// Registers the DICOM kit and the services. They use the desktop and the file service.
void RegisterDicom();
