#pragma once

/// Registers the serial port and the options of the clinic's ports.
void RegisterSerial();
