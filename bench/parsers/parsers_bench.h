#pragma once

namespace tavira::bench {

// Each prints its rows.
void MeasureBase64();
void MeasureScan();
void MeasureDirectory();

}  // namespace tavira::bench
