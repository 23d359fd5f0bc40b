#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# try_real_files.sh BUILD: tries the recipes of that build on the configuration files of Debian packages,
# which are downloaded and unpacked into a temporary folder, not installed. Prints the table of
# docs/recipes.md. With TREE=FOLDER, packages unpacked there, one folder each, are taken.
set -euo pipefail
here=$(dirname "$(realpath "${BASH_SOURCE[0]}")")
programs=$(realpath "$1/examples")
work=$(mktemp -d)
chmod 755 "$work"
trap 'rm -rf "$work"' EXIT
packages=(
  # blocks
  logrotate apache2 apt chrony cups-daemon dpkg exim4-base fail2ban haproxy iptraf-ng isc-dhcp-server keepalived
  lighttpd mariadb-server monit mosquitto munin-node nginx-common php8.2-fpm postgresql-common ppp proftpd-core
  prosody pure-ftpd-common redis-server rsyslog samba squid tor ufw ulogd2 unattended-upgrades vsftpd winbind
  # sections
  mariadb-client mariadb-common php8.2-common samba-common systemd
  # flat
  adduser cron login nut-client openssh-client openssh-server procps rsync smartmontools sudo udev
  libpopt0 libwrap0 # what logrotate and sshd need, to say what they make of a file
)
tree=${TREE:-$work/tree}
if [ -z "${TREE:-}" ]; then
  mkdir "$tree"
  (cd "$work" && apt-get download -q "${packages[@]}" >/dev/null 2>&1) || echo "Some packages could not be had." >&2
  for package in "$work"/*.deb; do
    name=${package##*/}
    mkdir "$tree/${name%%_*}"
    dpkg-deb -x "$package" "$tree/${name%%_*}"
  done
fi
LIBRARIES=$(find "$tree"/lib*/ -name '*.so.*' -printf '%h\n' | sort -u | paste -sd :) \
  python3 "$here/try_real_files.py" "$programs" "$tree"
