// The formatting library's own code, compiled into our programs. Debian ships it as a shared library only,
// which costs the console tool a fifth of its run: the library to load, and the C++ library that it needs to
// be shared as well.
#include <fmt/format-inl.h>

FMT_BEGIN_NAMESPACE
namespace detail {

// What the header declares as instantiated elsewhere, for char.
template auto dragonbox::to_decimal(float) noexcept -> dragonbox::decimal_fp<float>;
template auto dragonbox::to_decimal(double) noexcept -> dragonbox::decimal_fp<double>;
template locale_ref::locale_ref(const std::locale&);
template auto locale_ref::get<std::locale>() const -> std::locale;
template auto thousands_sep_impl(locale_ref) -> thousands_sep_result<char>;
template auto decimal_point_impl(locale_ref) -> char;
template void buffer<char>::append(const char*, const char*);
template void vformat_to(buffer<char>&, string_view, basic_format_args<FMT_BUFFER_CONTEXT(char)>, locale_ref);

}  // namespace detail
FMT_END_NAMESPACE
