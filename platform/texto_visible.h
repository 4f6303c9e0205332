// Text from outside made fit to be shown: a control character from a logger, a USB adapter or a file name
// would be an order to the terminal.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace telvane {

// Without control characters (C0 with line ends, DEL, C1), each malformed byte as U+FFFD, and so each mark
// that turns the direction of what follows it.
std::string sinControles(std::string_view utf8);

// A file's name, or a word that somebody typed, as it stands in a message: a line end in it would split the
// line, and without its control characters it would be another one. Each is U+FFFD as well.
std::string nombreVisible(const std::filesystem::path& ruta);

// Without them in each of several lines, whose ends stay.
std::string lineasSinControles(std::string_view utf8);

// Text that every data base and every JSON takes: each malformed byte, and each NUL, as U+FFFD; the rest as
// it is. A file's name may be of any bytes.
std::string utf8Valido(std::string_view texto);

// Finished JSON of valid UTF-8, the control characters that its writer lets through (DEL, C1) written as
// \uXXXX.
std::string controlesEscapados(std::string_view json);

}  // namespace telvane
