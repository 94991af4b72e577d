/// ColorPrintingOption: whether printing and export use colour, a setting of its own beside
/// the print setup's colour field.
#pragma once

/// The values are the setting's meaning and keep their numbers.
enum ColorPrintingOption : int {
    colorPrintingAlways = 0,    ///< in colour, whatever the print setup says
    colorPrintingNever = 1,     ///< in grey, whatever the print setup says
    colorPrintingFromSetup = 2, ///< as the print setup's colour field says
};
