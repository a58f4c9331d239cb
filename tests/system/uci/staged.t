# What is staged is what is read (measured)

  $ printf "config timeserver 'ntp'\n\toption server '10.0.0.1'\n" > system
  $ uci set system.ntp.server=10.0.0.9
  $ uci get system.ntp.server
  | 10.0.0.9
  $ uci show system.ntp.server
  | system.ntp.server='10.0.0.9'
  $ cat system
  | config timeserver 'ntp'
  | 	option server '10.0.0.1'

# Listed as often as it was staged, and kept as it is listed (source)

  $ printf "config interface 'lan'\n" > network
  $ uci set network.lan.proto=dhcp
  $ uci set network.lan.proto=none
  $ uci changes
  | network.lan.proto='dhcp'
  | network.lan.proto='none'
  $ cat ../staged/network
  | network.lan.proto='dhcp'
  | network.lan.proto='none'

# A change that has lost its section is listed, and no reason to write (source)

  $ printf "config interface 'lan'\n" > network
  $ uci set network.lan.proto=dhcp
  $ echo "# all gone" > network
  $ uci changes
  | network.lan.proto='dhcp'
  $ uci commit network
  $ cat network
  | # all gone

# Nothing is committed for -P (source)

  $ printf "config interface 'lan'\n" > network
  $ uci -P ../staged set network.lan.proto=dhcp
  $ uci -P ../staged commit
  $ cat network
  | config interface 'lan'

# Nothing staged, nothing to revert (source)

  $ printf "config interface 'lan'\n" > network
  $ uci revert network

# What the stand-in cannot do it says (ours)

  $ uci -q export network
  ! uci: export is not simulated
  [255]
  $ uci -q -S get network.lan
  ! uci: -S is not simulated
  [255]
