// Serial line speeds that the portable calls do not support.
#pragma once

namespace zvr {

/// Sets any speed. Throws std::system_error if the line or the system cannot run at it.
void setUnusualBaudRate(int descriptor, int baudRate);

}  // namespace zvr
