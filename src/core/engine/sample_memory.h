// Memory for blocks of samples.
#pragma once

#include <cstddef>
#include <memory>

namespace zvr {

/// Memory for this many doubles, not initialised. Any thread may release it. Released memory is reused and large pages
/// are requested, since faulting in an ordinary page takes longer than filling it with samples.
std::shared_ptr<double> sampleMemory(std::size_t count);

}  // namespace zvr
