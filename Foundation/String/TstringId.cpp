#include "Foundation/String/TstringId.h"

#include <utility>

namespace {

const TstringCatalog* installedCatalog = nullptr;

} // namespace

TstringCatalog::~TstringCatalog() = default;

const TstringCatalog* TstringCatalog::install(const TstringCatalog* catalog) noexcept
{
  return std::exchange(installedCatalog, catalog);
}

Tstring TstringId::asString() const noexcept
{
  Tstring text(fText);
  if (fKind == kNumber || (fKind == kCatalog && !(installedCatalog && installedCatalog->find(fId, text))))
    text.setUInt32(fId);
  return text;
}
