// SIGTERM, SIGINT and SIGHUP, turned into an ordinary event of the loop.
#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;

namespace telvane {

// At most one at a time.
class Senales {
   public:
    // Throws std::system_error.
    explicit Senales(std::function<void()> alTerminar);
    Senales(const Senales&) = delete;
    Senales& operator=(const Senales&) = delete;
    ~Senales();

   private:
    std::unique_ptr<QSocketNotifier> aviso_;
};

}  // namespace telvane
