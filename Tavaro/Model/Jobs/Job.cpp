#include <Tavaro/Model/Jobs/Job.h>

namespace tavaro {

std::exception_ptr asError(std::exception_ptr const& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (Error const&) {
        return failure;
    } catch (std::bad_alloc const&) {
        return std::make_exception_ptr(Error("There is not enough memory for this."));
    } catch (std::exception const& other) {
        return std::make_exception_ptr(Error(other.what()));
    } catch (...) {
        return std::make_exception_ptr(Error("Something went wrong that cannot say what it was."));
    }
}

}
