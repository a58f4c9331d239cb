# Changes of a section or option are those of the whole configuration (measured)

  $ printf "config interface 'lan'\nconfig interface 'wan'\n" > network
  $ uci set network.lan.proto=dhcp
  $ uci changes network.wan
  | network.lan.proto='dhcp'

# Getting a configuration prints nothing and succeeds (measured)

  $ printf "config interface 'lan'\n" > network
  $ uci get network

# An empty value fails where the section is missing, and is nothing where only the option is (measured)

  $ printf "config interface 'lan'\n" > network
  $ uci -q set network.wan.gateway=
  [1]
  $ uci set network.lan.gateway=
  $ uci changes

# An empty value deletes what is there (source)

  $ printf "config interface 'lan'\n\toption gateway '10.0.0.1'\n" > network
  $ uci set network.lan.gateway=
  $ uci changes
  | -network.lan.gateway

# A new type for a section by its index succeeds, whether there is such a section or not (measured)

  $ printf "config interface\n" > network
  $ uci set network.@interface[0]=bridge
  $ uci set network.@nothing[3]=bridge

# Where there is none nothing is changed (source)

  $ printf "config interface\n" > network
  $ uci set network.@interface[3]=bridge
  $ uci changes
  $ uci show
  | network.@interface[0]=interface

# What was staged there in vain keeps everything from being reverted (source)

  $ printf "config interface 'lan'\n" > network
  $ uci set network.lan.proto=dhcp
  $ uci set network.@interface[3]=bridge
  $ uci revert network
  $ uci changes
  | network.lan.proto='dhcp'

# A list's item with blanks is quoted (measured)

  $ printf "config timeserver 'ntp'\n\tlist server 'a b'\n\tlist server 'c'\n" > system
  $ uci get system.ntp.server
  | 'a b' c

# A single value with blanks is not (source)

  $ printf "config timeserver 'ntp'\n\toption server 'a b'\n" > system
  $ uci get system.ntp.server
  | a b

# The tool of 2014 lists changes without quotes (measured)

  $ printf "config interface 'lan'\n\toption gateway '10.0.0.1'\n" > network
  $ uci set network.lan.proto=dhcp
  $ uci delete network.lan.gateway
  $ SIM_UCI_YEAR=2014 uci changes
  | network.lan.proto=dhcp
  | -network.lan.gateway
  $ uci changes
  | network.lan.proto='dhcp'
  | -network.lan.gateway
