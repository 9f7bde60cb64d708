#pragma once

#include <pthread.h>

#include <string>

namespace tavaro {

/// Names the calling thread by the last parts of a label; the system keeps 15 bytes.
inline void nameThisThread(std::string const& label) {
    pthread_setname_np(pthread_self(), label.substr(label.size() > 15 ? label.size() - 15 : 0).c_str());
}

}
