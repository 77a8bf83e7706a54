// A disk that fails, in the test programs that link support/failing_disk.c.
#pragma once

// From now on writes (or flushes) of every file whose path starts with the prefix end in EIO;
// null for none. The prefixes must stay valid while they are set.
extern "C" void FailWritesAndFlushes(const char* writesUnder, const char* flushesUnder);
