// The colours of pictures.
#pragma once

#include <array>

namespace cli {

// Grey for the first curve, then colours that people with any kind of colour vision can distinguish (Okabe and Ito).
inline constexpr std::array kColours{"#999999", "#0072b2", "#d55e00", "#009e73",
                                     "#cc79a7", "#56b4e9", "#e69f00", "#000000"};

inline constexpr const char *kBandColour = "#e69f00";

// From low to high: equal steps of a value look equally large, in grey too (Viridis, at every eighth of its range).
inline constexpr std::array kPalette{"#440154", "#472d7b", "#3b528b", "#2c728e", "#21918c",
                                     "#28ae80", "#5ec962", "#addc30", "#fde725"};

}  // namespace cli
