#pragma once

#include <memory>

#include <TavaroPlatform/Queues/RowBands.h>

namespace tavaro {

/// Draws rows on a few threads of its own and on the caller's. Threads sleep while there is nothing to draw.
class RowPool final : public RowBands {
public:
    /// `threads` counts the caller's too, so 1 starts none; 0 means one a core.
    explicit RowPool(int threads = 0);
    ~RowPool() override;
    RowPool(RowPool const&) = delete;
    RowPool& operator=(RowPool const&) = delete;

    int threads() const;

    /// One caller at a time.
    void run(int rowCount, Band band) override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
