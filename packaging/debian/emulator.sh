#!/usr/bin/env bash
# Installs what runs programs for 64-bit ARM, and nothing else.
apt-get update -qq
DEBIAN_FRONTEND=noninteractive apt-get install -qq -y --no-install-recommends qemu-user-static > /dev/null
