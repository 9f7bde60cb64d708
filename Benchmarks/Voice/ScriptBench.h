#pragma once

namespace tavaro {

/// Drafting and reading scripts.
void benchScript();

}
