// A disk that fails: writes and flushes of chosen files end in EIO, as on a dying drive or a
// network share that went away. Linked into the test programs ahead of the C library, the write,
// pwrite, fsync and fdatasync here stand in front of the system's for the whole process, so the
// editor's own code meets the failure unchanged. They pass everything through until a test names
// the files (FailWritesAndFlushes; null for none). A failing write that starts a file first
// stores half its bytes, so the failure comes with part of the content already on disk. The disk
// then recovers: one write (or flush) fails, the next ones go through again.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdatomic.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

// Read by every thread that writes, set by the test's.
static _Atomic(const char*) writesUnder, flushesUnder;

void FailWritesAndFlushes(const char* writes, const char* flushes) {
  atomic_store(&writesUnder, writes);
  atomic_store(&flushesUnder, flushes);
}

static int Fails(_Atomic(const char*)* under, int fd) {
  const char* prefix = atomic_load(under);
  if (prefix == NULL) return 0;
  char link[64], path[4096];
  snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  const ssize_t n = readlink(link, path, sizeof path - 1);
  if (n < 0) return 0;
  path[n] = '\0';
  return strncmp(path, prefix, strlen(prefix)) == 0;
}

static ssize_t Failed(_Atomic(const char*)* under) {
  atomic_store(under, NULL);
  errno = EIO;
  return -1;
}

static void* Next(const char* name) { return dlsym(RTLD_NEXT, name); }

// How much of a write of `count` bytes at `offset` goes through: half of the first one, else none.
static size_t Passes(size_t count, off_t offset) { return offset == 0 && count > 1 ? count / 2 : 0; }

ssize_t write(int fd, const void* data, size_t count) {
  static ssize_t (*next)(int, const void*, size_t);
  if (next == NULL) next = (ssize_t(*)(int, const void*, size_t))Next("write");
  if (Fails(&writesUnder, fd)) {
    count = Passes(count, lseek(fd, 0, SEEK_CUR));
    if (count == 0) return Failed(&writesUnder);
  }
  return next(fd, data, count);
}

static ssize_t WriteAt(const char* name, int fd, const void* data, size_t count, off_t offset) {
  ssize_t (*next)(int, const void*, size_t, off_t) = (ssize_t(*)(int, const void*, size_t, off_t))Next(name);
  if (Fails(&writesUnder, fd)) {
    count = Passes(count, offset);
    if (count == 0) return Failed(&writesUnder);
  }
  return next(fd, data, count, offset);
}

ssize_t pwrite(int fd, const void* data, size_t count, off_t offset) {
  return WriteAt("pwrite", fd, data, count, offset);
}

ssize_t pwrite64(int fd, const void* data, size_t count, off_t offset) {
  return WriteAt("pwrite64", fd, data, count, offset);
}

static int Flush(const char* name, int fd) {
  if (Fails(&flushesUnder, fd)) return (int)Failed(&flushesUnder);
  return ((int (*)(int))Next(name))(fd);
}

int fsync(int fd) { return Flush("fsync", fd); }
int fdatasync(int fd) { return Flush("fdatasync", fd); }
