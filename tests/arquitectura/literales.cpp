#include "tests/arquitectura/literales.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace telvane::arquitectura {

namespace {

class Lector {
   public:
    explicit Lector(std::string_view fuente) : resto_(fuente) {}

    std::vector<Literal> leer() {
        while (!resto_.empty()) paso();
        return literales_;
    }

   private:
    void paso() {
        if (resto_.starts_with("//") || (resto_.front() == '#' && comienzoDeLinea_)) return saltarHasta("\n");
        if (resto_.starts_with("/*")) return saltarHasta("*/");
        if (resto_.starts_with("R\"(")) return literal(tomarHasta("R\"(", ")\""));
        if (resto_.front() == '"') return literal(entreComillas('"'));
        // Within a number the mark only separates digits.
        if (resto_.front() == '\'' && !std::isalnum(static_cast<unsigned char>(anterior_))) {
            entreComillas('\'');
            return codigo('0');
        }
        codigo(tomar());
    }

    void codigo(char c) {
        if (c == '\n') comienzoDeLinea_ = true;
        if (std::isspace(static_cast<unsigned char>(c))) {
            if (!contexto_.empty() && contexto_.back() != ' ') contexto_ += ' ';
            return;
        }
        comienzoDeLinea_ = false;
        pegado_ = false;
        anterior_ = c;
        if (c == ';' || c == '{' || c == '}') {
            contexto_.clear();
        } else {
            contexto_ += c;
        }
    }

    void literal(const std::string& texto) {
        if (pegado_) {
            literales_.back().texto += texto;
            return;
        }
        literales_.push_back({texto, contexto_});
        contexto_ += "\"\"";
        comienzoDeLinea_ = false;
        anterior_ = '"';
        pegado_ = true;
    }

    std::string entreComillas(char comilla) {
        std::string texto;
        for (resto_.remove_prefix(1); !resto_.empty() && resto_.front() != comilla;) {
            if (resto_.front() == '\\' && resto_.size() > 1) {
                resto_.remove_prefix(1);
                texto += escape();
            } else {
                texto += tomar();
            }
        }
        if (!resto_.empty()) resto_.remove_prefix(1);
        return texto;
    }

    // What follows a backslash. A number is the byte that it names; what moves the cursor counts as a line
    // end.
    char escape() {
        if (resto_.front() == 'x') {
            resto_.remove_prefix(1);
            return numero(16, resto_.size());
        }
        if (resto_.front() >= '0' && resto_.front() <= '7') return numero(8, 3);
        const char c = tomar();
        return std::string_view("\"\\'").find(c) != std::string_view::npos ? c : '\n';
    }

    char numero(int base, std::size_t cifras) {
        unsigned valor = 0;
        const auto* desde = resto_.data();
        const auto* fin = std::from_chars(desde, desde + std::min(cifras, resto_.size()), valor, base).ptr;
        resto_.remove_prefix(static_cast<std::size_t>(fin - desde));
        return static_cast<char>(valor);
    }

    char tomar() {
        const char c = resto_.front();
        resto_.remove_prefix(1);
        return c;
    }

    std::string tomarHasta(std::string_view comienzo, std::string_view fin) {
        resto_.remove_prefix(comienzo.size());
        const std::string texto(resto_.substr(0, resto_.find(fin)));
        saltarHasta(fin);
        return texto;
    }

    void saltarHasta(std::string_view fin) {
        const auto donde = resto_.find(fin);
        resto_.remove_prefix(donde == std::string_view::npos ? resto_.size() : donde + fin.size());
        if (fin == "\n") comienzoDeLinea_ = true;
    }

    std::string_view resto_;
    std::string contexto_;
    std::vector<Literal> literales_;
    char anterior_ = ' ';
    bool comienzoDeLinea_ = true;
    bool pegado_ = false;  // nothing but blanks since the last literal
};

}  // namespace

std::vector<Literal> leerLiterales(std::string_view fuente) {
    return Lector(fuente).leer();
}

}  // namespace telvane::arquitectura
