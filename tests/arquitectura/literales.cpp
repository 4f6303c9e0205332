#include "tests/arquitectura/literales.h"

#include <cctype>

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
        const char c = resto_.front();
        resto_.remove_prefix(1);
        codigo(c);
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
        for (resto_.remove_prefix(1); !resto_.empty() && resto_.front() != comilla; resto_.remove_prefix(1)) {
            if (resto_.front() == '\\' && resto_.size() > 1) {
                resto_.remove_prefix(1);
                const bool esElMismo =
                    std::string_view("\"\\'").find(resto_.front()) != std::string_view::npos;
                texto += esElMismo ? resto_.front() : '\n';
            } else {
                texto += resto_.front();
            }
        }
        if (!resto_.empty()) resto_.remove_prefix(1);
        return texto;
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
