/* SPDX-License-Identifier: MIT */
/* POSIX calls that GoogleTest and libstdc++ reference but a bare-metal newlib
   lacks. None of them is used at run time by the tests. */
#include <errno.h>
#include <stddef.h>
#include <sys/types.h>

int dup(int fd);
int dup2(int fd, int fd2);
char* getcwd(char* buf, size_t size);
int mkdir(const char* path, mode_t mode);
int getentropy(void* buf, size_t len);

int dup(int fd) {
  (void)fd;
  errno = ENOSYS;
  return -1;
}

int dup2(int fd, int fd2) {
  (void)fd;
  (void)fd2;
  errno = ENOSYS;
  return -1;
}

char* getcwd(char* buf, size_t size) {
  (void)buf;
  (void)size;
  errno = ENOSYS;
  return NULL;
}

int mkdir(const char* path, mode_t mode) {
  (void)path;
  (void)mode;
  errno = ENOSYS;
  return -1;
}

int getentropy(void* buf, size_t len) {
  (void)buf;
  (void)len;
  errno = ENOSYS;
  return -1;
}
