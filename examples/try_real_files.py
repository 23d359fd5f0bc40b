# SPDX-License-Identifier: MIT
# try_real_files.py PROGRAMS TREE: edits copies of the configuration files below TREE with the
# programs in the folder PROGRAMS, and holds every result against a reading of its own: the bytes,
# Python's configparser, and logrotate and sshd where TREE has them. Prints a Markdown table.
import collections
import configparser
import glob
import os
import re
import subprocess
import sys
import tempfile

# What logrotate and sshd need to run where they are not installed.
libraries = dict(os.environ, LD_LIBRARY_PATH=os.environ.get("LIBRARIES", ""))
programs, tree = (os.path.realpath(path) for path in sys.argv[1:3])
work = tempfile.mkdtemp(dir="/dev/shm" if os.path.isdir("/dev/shm") else None)
copy = os.path.join(work, "copy")
KEYS_OF_A_FILE = 6  # tried in each file or section, spread over it


def files(*patterns):
    found = {path for pattern in patterns for path in glob.glob(f"{tree}/*/{pattern}", recursive=True)}
    return sorted(path for path in found if os.path.isfile(path))


def spread(keys):
    keys = list(dict.fromkeys(keys))
    return keys[:: max(1, -(-len(keys) // KEYS_OF_A_FILE))]


class Recipe:
    def __init__(self, name):
        self.name, self.files, self.edits, self.checked = name, set(), 0, 0
        self.other, self.wrong, self.refused = 0, [], collections.Counter()

    # Runs one edit on a copy. The bytes after it, or None where it was refused.
    def run(self, path, before, command, verb):
        with open(copy, "wb") as file:
            file.write(before)
        done = subprocess.run([os.path.join(programs, command[0])] + command[1:], capture_output=True)
        with open(copy, "rb") as file:
            after = file.read()
        self.files.add(path)
        if done.returncode != 0:
            said = done.stdout.decode(errors="replace").strip()
            self.refused[re.sub(r"^(line \d+)?[^:]*: ", "", re.sub(r"(in line) \d+", r"\1 N", said[9:]))] += 1
            if after != before:
                self.wrong.append(f"{path}: refused, but changed: {command}")
            return None
        self.edits += 1
        old, new = before.splitlines(True), after.splitlines(True)
        head = next((n for n, (a, b) in enumerate(zip(old, new)) if a != b), min(len(old), len(new)))
        tail = next((n for n, (a, b) in enumerate(zip(old[:head - 1 if head else None:-1], new[:head - 1 if head else None:-1])) if a != b),
                    min(len(old), len(new)) - head)
        gone, come = old[head:len(old) - tail], new[head:len(new) - tail]
        # A last line that was given its line feed counts as changed: it is named apart.
        expected = {"set": (1, 1), "rename": (1, 1), "add": (0, 1), "delete": (1, 0)}[verb]
        if (len(gone), len(come)) != expected:
            mended = verb == "add" and len(gone) == 1 and gone[0] + b"\n" == come[0]
            if not mended:
                self.other += abs(len(gone) - expected[0]) + abs(len(come) - expected[1])
                self.wrong.append(f"{path}: {command}: {gone} -> {come}")
        if verb == "set" and gone and come:
            # What stands before the value and after it is as it was.
            value = command[-1].encode()
            at = come[0].rfind(value)
            around = gone[0].startswith(come[0][:at]) and gone[0].endswith(come[0][at + len(value):])
            empty = come[0][:at].rstrip() == gone[0].rstrip()  # a blank comes before the first value
            if at < 0 or not (around or empty):
                self.wrong.append(f"{path}: {command}: {gone} -> {come}")
        return after

    def check(self, good, path, command):
        self.checked += 1
        if not good:
            self.wrong.append(f"{path}: {command}: read as something else")


def read_ini(data):
    parser = configparser.ConfigParser(strict=False, interpolation=None, allow_no_value=True, delimiters=("=",),
                                       comment_prefixes=("#", ";", "!"), default_section="\0")
    parser.optionxform = str
    try:
        parser.read_string(data.decode("latin-1"))
    except configparser.Error:
        return None
    return {name: dict(parser[name]) for name in parser.sections()}


# What the parser must have read after an edit.
def expected_ini(before, section, verb, key, text):
    want = {name: dict(entries) for name, entries in before.items()}
    if verb in ("set", "add"):
        want[section][key] = text
    if verb == "rename":
        want[section][text] = want[section].pop(key)
    if verb == "delete":
        del want[section][key]
    return want


def try_ini():
    recipe = Recipe("INI sections")
    paths = files("**/php.ini-*", "**/*.cnf", "**/smb.conf*", "**/fpm/**/*.conf", "**/systemd/*.conf")
    for path in paths + files("**/systemd/system/*.service", "**/systemd/system/*.timer", "**/systemd/system/*.socket"):
        with open(path, "rb") as file:
            before = file.read()
        read = read_ini(before)
        for section, entries in (read or {}).items():
            for key in spread(entries):
                for verb, text in (("set", "4711"), ("rename", "A-new-key"), ("delete", None), ("add", "4711")):
                    name = "A-new-key" if verb == "add" else key
                    command = ["ini_edit", copy, section, verb, name] + ([text] if text else [])
                    after = recipe.run(path, before, command, verb)
                    if after is not None:
                        want = expected_ini(read, section, verb, name, text)
                        recipe.check(read_ini(after) == want, path, command)
    return recipe


# The entries of a flat file as (key, value), the blanks and the comment around the value away.
def read_flat(data, blanks):
    entries = []
    for line in data.decode("latin-1").split("\n"):
        line = line.strip()
        if not line or line[0] in "#;!":
            continue
        line = re.sub(r"\s#.*", "", line)
        parts = re.split(r"\s*=\s*|\s+" if blanks else r"\s*=\s*", line, maxsplit=1)
        entries.append((parts[0], parts[1].strip() if len(parts) > 1 else None))
    return entries


def try_flat(name, blanks, patterns):
    recipe = Recipe(name)
    for path in files(*patterns):
        with open(path, "rb") as file:
            before = file.read()
        read = read_flat(before, blanks)
        for key in spread(key for key, value in read if value):
            for verb, text in (("set", "4711"), ("rename", "ANewKey"), ("delete", None), ("add", "4711")):
                command = ["line_edit", "--note", "#", copy, "blanks" if blanks else "=", verb, key]
                after = recipe.run(path, before, command + ([text] if text else []), verb)
                if after is None:
                    continue
                at = max(n for n, entry in enumerate(read) if entry[0] == key)
                want = list(read)
                if verb == "set":
                    want[at] = (key, text)
                elif verb == "rename":
                    want[at] = (text, read[at][1])
                elif verb == "delete":
                    del want[at]
                else:
                    want.insert(at + 1, (key, text))
                recipe.check(read_flat(after, blanks) == want, path, command)
    return recipe


def try_ssh():
    recipe = Recipe("sshd_config with a Match block")
    sshd = next(iter(glob.glob(f"{tree}/*/usr/sbin/sshd")), None)
    host_key = os.path.join(work, "key")
    subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", host_key], check=False)

    # It wants a user and a folder of its own: they are there for this process alone (as root).
    passwd = os.path.join(work, "passwd")
    with open("/etc/passwd") as old, open(passwd, "w") as new:
        new.write(old.read() + "\nsshd:x:998:65534::/run/sshd:/usr/sbin/nologin\n")
    own_user = (f'mount --bind {passwd} /etc/passwd && mount -t tmpfs tmpfs /run && mkdir -m 755 /run/sshd && exec "$@"')

    def effective(data):
        with open(copy, "wb") as file:
            file.write(data)
        said = subprocess.run(["unshare", "-m", "sh", "-c", own_user, "sh", sshd, "-T", "-f", copy, "-h", host_key],
                              capture_output=True, text=True, env=libraries)
        return said.stdout.lower().splitlines() if said.returncode == 0 else None

    for path in files("**/sshd_config"):
        with open(path, "rb") as file:
            plain = file.read()
        before = plain + b"\nMatch User nobody\n\tX11Forwarding no"
        can = sshd is not None and effective(before) is not None
        for verb, key, text in (("set", "X11Forwarding", "no"), ("set", "x11forwarding", "no"), ("set", "MaxAuthTries", "3"),
                                ("add", "Port", "2222"), ("add", "AcceptEnv", "TZ"), ("set", "UsePAM", "no"),
                                ("set", "PermitRootLogin", "no"), ("add", "HostKeyAlgorithms", "ssh-ed25519")):
            # A key that is missing is added: the line count is that of an addition.
            kind = "set" if re.search(rb"(?im)^" + key.encode() + rb"\s", plain) and verb == "set" else "add"
            command = ["line_edit", "--ignore-case", "--note", "#", "--before", "Match", copy, "blanks", verb, key, text]
            after = recipe.run(path, before, command, kind)
            if after is not None and can:
                recipe.check(any(line.split()[0] == key.lower() and text.lower() in line for line in effective(after)), path, command)
    return recipe


# What logrotate makes of a file: how many rotations for which names.
def rotations(logrotate, data):
    with open(copy, "wb") as file:  # with users that are there
        file.write(re.sub(rb"(?m)^(\s*create +\d+) .*", rb"\1 root root", data))
    os.chmod(copy, 0o644)
    said = subprocess.run([logrotate, "-d", "-s", os.path.join(work, "state"), copy], capture_output=True, text=True, env=libraries)
    # One pattern may be several lines long.
    return dict(re.findall(r"(?s)rotating pattern: (.*?)\((no old logs will be kept|\d+) ?(?:rotations)?\)", said.stderr))


def try_blocks():
    recipe = Recipe("Blocks")
    logrotate = next(iter(glob.glob(f"{tree}/*/usr/sbin/logrotate")), None)
    for path in files("**/etc/logrotate.d/*", "**/etc/dhcp/dhcpd.conf", "**/*.bind*", "**/nginx.conf", "**/samples/keepalived.conf*"):
        with open(path, "rb") as file:
            before = file.read()
        with open(copy, "wb") as file:
            file.write(before)
        done = subprocess.run([f"{programs}/block_edit", copy], capture_output=True)
        if done.returncode != 0:
            recipe.run(path, before, ["block_edit", copy], "set")
            continue
        for line in done.stdout.decode("latin-1").splitlines():
            name = line.split(": ", 1)[1]
            edits = [("set", "rotate", "4711"), ("rename", "rotate", "start"), ("delete", "rotate", None), ("add", "maxage", "4711")]
            if "dhcpd" in path:
                edits = [("set", "max-lease-time", "4711"), ("add", "max-lease-time", "4711"), ("add", "option routers", "10.0.0.1")]
            for verb, key, text in edits:
                known = re.search(rb"(?m)^\s*" + key.encode() + rb"\b", before) is not None
                command = ["block_edit", copy, name, verb, key] + ([text] if text else [])
                after = recipe.run(path, before, command, verb if verb != "set" or known else "add")
                if after is None:
                    continue
                again = subprocess.run([f"{programs}/block_edit", "--dry-run", copy, name, "set", key, text or "0"], capture_output=True)
                if verb in ("set", "add") and (again.returncode != 0 or again.stdout):
                    recipe.wrong.append(f"{path}: {command}: not read again")
                if verb == "set" and logrotate is not None and "logrotate.d" in path:
                    was, now = rotations(logrotate, before), rotations(logrotate, after)
                    first = name.split()[0].strip('"')
                    mine = [pattern for pattern in now if first in pattern]
                    good = any(now[pattern] == "4711" for pattern in mine) and len(was) == len(now)
                    good = good and all(now[pattern] == was[pattern] for pattern in now if pattern not in mine)
                    recipe.check(good, path, command)
            with open(copy, "wb") as file:
                file.write(before)
    return recipe


flat = ["**/etc/vsftpd.conf", "**/etc/sysctl.conf", "**/etc/adduser.conf", "**/etc/deluser.conf", "**/etc/default/*",
        "**/etc/ufw/sysctl.conf", "**/etc/udev/udev.conf", "**/nut.conf"]
spaced = ["**/etc/ssh/ssh*_config", "**/etc/login.defs", "**/redis.conf", "**/mosquitto.conf", "**/chrony.conf", "**/torrc",
          "**/munin-node.conf", "**/cups-files.conf", "**/squid.conf", "**/upsmon.conf", "**/proftpd.conf", "**/monitrc",
          "**/logrotate.conf", "**/rsyslog.conf", "**/dpkg.cfg", "**/sudo.conf", "**/etc/nut/*.conf", "**/ppp/options"]
failed = False
print("| Recipe | Files | Edits | Other lines changed | Read again by another reader | Refused, and why |")
print("|---|---|---|---|---|---|")
for recipe in (try_blocks(), try_ini(), try_flat("Flat, `=`", False, flat), try_flat("Flat, blanks or tabs", True, spaced), try_ssh()):
    why = "; ".join(f"{count} {reason}" for reason, count in recipe.refused.most_common())
    print(f"| {recipe.name} | {len(recipe.files)} | {recipe.edits} | {recipe.other} | {recipe.checked} | {why or 'none'} |")
    for text in recipe.wrong[:20]:
        print(f"WRONG: {text}", file=sys.stderr)
    failed = failed or bool(recipe.wrong)
subprocess.run(["rm", "-rf", work], check=True)
sys.exit(failed)
