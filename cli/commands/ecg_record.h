#pragma once

namespace cli {

// A CSV with the columns time_s and ecg_mV: 30 s at 360 Hz.
extern const char *const kEcgRecord;

}  // namespace cli
