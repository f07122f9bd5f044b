// What the processor could do at best.
#pragma once

namespace bench {

/// Additions and multiplications a second of fused multiply-adds on registers of the widest kind
/// that this processor has, on this thread, measured now for about five milliseconds.
double peakFlops();

}  // namespace bench
