#pragma once

/// From here on the forms' notice strips tell what stands in the way of printed sheets, with the button "닫기".
void ShowPrinterOnForms();
