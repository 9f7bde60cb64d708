#pragma once

#include <QString>

#include <exception>

namespace tavaro {

/// A failure as its user reads it.
QString sentenceOf(std::exception_ptr const& failure);

}
