// x265 keeps some memory of each encoder that it closes; nothing here can free it. Called by the leak checker, where
// there is one.
extern "C" char const* __lsan_default_suppressions() { return "leak:libx265.so\n"; }
