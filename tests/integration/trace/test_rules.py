# SPDX-License-Identifier: MIT
"""Whether what a first play may not do is noticed in a trace."""

import unittest

from calls import calls_in, split, text_of
from rules import Permitted, Thread

PERMITTED = Permitted(["/home/data"], ["/dev/null"], [r"/tmp/\.X11-unix/X\d+"])


def thread(*lines):
    return Thread(calls_in(lines), PERMITTED, "/work")


class Files(unittest.TestCase):
    def refused(self, *lines):
        self.assertEqual(len(thread(*lines).complaints), 1, lines)

    def allowed(self, *lines):
        self.assertEqual(thread(*lines).complaints, [], lines)

    def test_writing_within_a_tree_is_allowed(self):
        self.allowed('openat(AT_FDCWD</work>, "/home/data/x", O_WRONLY|O_CREAT, 0666) = 3</home/data/x>')
        self.allowed('mkdir("/home/data", 0777) = 0')
        self.allowed('unlinkat(5</home/data/a>, "b", AT_REMOVEDIR) = 0')
        self.allowed('openat(AT_FDCWD</work>, "/dev/null", O_RDWR) = 3</dev/null>')

    def test_reading_anywhere_is_allowed(self):
        self.allowed('openat(AT_FDCWD</work>, "/etc/passwd", O_RDONLY|O_CLOEXEC) = 3</etc/passwd>')

    def test_writing_anywhere_else_is_noticed(self):
        self.refused('openat(AT_FDCWD</work>, "/home/database", O_WRONLY|O_CREAT, 0666) = 3</home/database>')
        self.refused('openat(AT_FDCWD</work>, "/home/data/../x", O_RDWR) = 3</home/x>')
        self.refused('mkdir("/home/cache", 0777) = 0')
        self.refused('rename("/home/data/x", "/home/x") = 0')
        self.refused('rename("/home/x", "/home/data/x") = 0')
        self.refused('renameat2(5</home/data>, "x", 6</home>, "x", RENAME_NOREPLACE) = 0')
        self.refused('symlinkat("/home/data/x", 6</home>, "x") = 0')
        self.refused('utimensat(6</home>, "x", NULL, 0) = 0')

    def test_an_attempt_counts_as_well(self):
        self.refused('openat(AT_FDCWD</work>, "/x", O_WRONLY|O_CREAT, 0666) = -1 EACCES (Permission denied)')

    def test_a_relative_path_is_taken_from_the_folder_worked_in(self):
        self.refused('mkdir("x", 0777) = 0')
        self.allowed('chdir("/home/data") = 0', 'mkdir("x", 0777) = 0')
        self.refused('chdir("/home/data") = -1 ENOENT (No such file or directory)', 'mkdir("x", 0777) = 0')
        self.allowed("fchdir(5</home/data/y>) = 0", 'mkdir("../x", 0777) = 0')

    def test_names_with_quotes_and_commas_are_read_whole(self):
        arguments = split('"a, \\"b\\"", {x=1, y=[2, 3]}, 5</a b>')
        self.assertEqual(arguments, ('"a, \\"b\\""', "{x=1, y=[2, 3]}", "5</a b>"))
        self.assertEqual(text_of('"\\303\\251 \\"b\\""'), '\u00e9 "b"')


class Network(unittest.TestCase):
    LINE = 'connect(3<socket:[7]>, {sa_family=AF_INET, sin_port=htons(%s), sin_addr=inet_addr("%s")}, 16) = 0'

    def test_whom_a_thread_reaches_is_told(self):
        self.assertEqual(thread(self.LINE % (53, "9.9.9.9")).reached, [("53", "9.9.9.9")])
        line = (
            'sendto(3<socket:[7]>, "x", 1, 0, {sa_family=AF_INET6, sin6_port=htons(443), '
            'sin6_flowinfo=htonl(0), inet_pton(AF_INET6, "2001:db8::1", &sin6_addr), '
            "sin6_scope_id=0}, 28) = 1"
        )
        self.assertEqual(thread(line).reached, [("443", "2001:db8::1")])

    def test_a_socket_counts_as_one_connection(self):
        line = self.LINE % (80, "127.0.0.1")
        self.assertEqual(len(thread(line, line).connections), 1)

    def test_sockets_of_this_machine_are_allowed_by_name(self):
        for name, complaints in (("/tmp/.X11-unix/X0", 0), ("/run/user/0/other", 1)):
            line = 'connect(3<socket:[7]>, {sa_family=AF_UNIX, sun_path=@"%s"}, 20) = 0' % name
            self.assertEqual(len(thread(line).complaints), complaints)

    def test_listening_to_other_machines_is_noticed(self):
        line = (self.LINE % (0, "0.0.0.0")).replace("connect", "bind")
        self.assertEqual(len(thread(line).complaints), 1)


if __name__ == "__main__":
    unittest.main()
