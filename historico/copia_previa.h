// The copy of an archive's file that stays beside it before a migration.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

namespace telvane {

// Under "FILE.versionN", or the first of the names after it that nothing has: an earlier copy, or whatever
// else stands there, stays; of one that is the same no second is kept. hacer makes it, whole, under the name
// that it is given. What attempts that were killed left goes. Throws ErrorAlmacen, ErrorGuardado and what
// hacer throws; then nothing new stands there.
void guardarCopiaPrevia(const std::filesystem::path& archivo, std::int64_t version,
                        const std::function<void(const std::filesystem::path&)>& hacer);

}  // namespace telvane
