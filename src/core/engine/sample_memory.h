// Memory for blocks of samples.
#pragma once

#include <cstddef>
#include <memory>

namespace zvr {

/// Memory for this many doubles, not initialised. Any thread may let go of it. What has been let go of is used again,
/// and large pages are asked for: to find and clear an ordinary page takes longer than to fill it with samples.
std::shared_ptr<double> sampleMemory(std::size_t count);

}  // namespace zvr
