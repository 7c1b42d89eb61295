#!/usr/bin/env python3
"""Mounts a folder as a home directory on a file server may look like: network_home.py FOLDER PLACE

No socket, pipe or device can be made there, no program can be started from there, and no other user, not even root, can
look into it. What changes in FOLDER itself, as another computer would change it, is announced to nobody at PLACE. Runs
until it is unmounted with "fusermount -u PLACE". Needs python3-fusepy and fuse3.
"""

import errno
import os
import stat
import sys

import fusepy as fuse


class NetworkHome(fuse.Operations):
    def __init__(self, folder):
        self._folder = folder

    def __call__(self, name, path, *arguments):
        try:
            return super().__call__(name, self._folder + path, *arguments)
        except fuse.FuseOSError:
            raise
        except OSError as error:
            raise fuse.FuseOSError(error.errno) from error

    def mknod(self, path, mode, dev):
        if not stat.S_ISREG(mode):
            raise fuse.FuseOSError(errno.EPERM)
        os.mknod(path, mode, dev)
        return 0

    def getattr(self, path, fh=None):
        status = os.lstat(path)
        return {name: getattr(status, name) for name in dir(status) if name.startswith('st_')}

    def readdir(self, path, fh):
        return ['.', '..', *os.listdir(path)]

    def access(self, path, amode):
        if not os.access(path, amode):
            raise fuse.FuseOSError(errno.EACCES)
        return 0

    def readlink(self, path):
        return os.readlink(path)

    def symlink(self, target, source):
        os.symlink(source, target)

    def link(self, target, source):
        os.link(self._folder + source, target)

    def rename(self, old, new):
        os.rename(old, self._folder + new)

    def mkdir(self, path, mode):
        os.mkdir(path, mode)

    def rmdir(self, path):
        os.rmdir(path)

    def unlink(self, path):
        os.unlink(path)

    def chmod(self, path, mode):
        os.chmod(path, mode)

    def chown(self, path, uid, gid):
        os.chown(path, uid, gid, follow_symlinks=False)

    def utimens(self, path, times=None):
        os.utime(path, times, follow_symlinks=False)

    def statfs(self, path):
        status = os.statvfs(path)
        return {name: getattr(status, name) for name in dir(status) if name.startswith('f_') and name != 'f_fsid'}

    def open(self, path, flags):
        # The kernel says itself where each write belongs.
        return os.open(path, flags & ~os.O_APPEND)

    def create(self, path, mode, fi=None):
        return os.open(path, os.O_RDWR | os.O_CREAT | os.O_EXCL, mode)

    def read(self, path, size, offset, fh):
        return os.pread(fh, size, offset)

    def write(self, path, data, offset, fh):
        return os.pwrite(fh, data, offset)

    def truncate(self, path, length, fh=None):
        os.truncate(path if fh is None else fh, length)

    def flush(self, path, fh):
        return 0

    def fsync(self, path, datasync, fh):
        os.fsync(fh)

    def release(self, path, fh):
        os.close(fh)


if __name__ == '__main__':
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    os.umask(0)
    fuse.FUSE(NetworkHome(os.path.abspath(sys.argv[1])), sys.argv[2], foreground=True, noexec=True)
