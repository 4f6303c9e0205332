// The signals that end the program, turned into an ordinary event of the loop.
#pragma once

#include <functional>
#include <memory>
#include <vector>

class QSocketNotifier;

namespace telvane {

// At most one at a time.
class SenalesDeFin {
   public:
    // Throws std::system_error.
    explicit SenalesDeFin(std::function<void()> alTerminar);
    SenalesDeFin(const SenalesDeFin&) = delete;
    SenalesDeFin& operator=(const SenalesDeFin&) = delete;
    ~SenalesDeFin();

   private:
    std::vector<int> senales_;
    std::unique_ptr<QSocketNotifier> aviso_;
};

}  // namespace telvane
