# Two words as a value are told how it goes, with -q too (measured)

  $ printf "config interface 'lan'\n" > network
  $ uci -q set network.lan.proto=two words
  ! (35 lines)
  [255]
  $ uci set network.lan.proto=two words
  ! (35 lines)
  [255]
  $ uci changes

# So is an unknown verb (measured)

  $ uci -q frobnicate
  ! (35 lines)
  [255]

# So is a verb without what it is about (measured)

  $ uci -q get
  ! (35 lines)
  [255]
  $ uci -q revert
  ! (35 lines)
  [255]

# Without any verb that is no failure (source)

  $ uci -q
  ! (35 lines)

# Verbs may be shouted (source)

  $ printf "config interface 'lan'\n" > network
  $ uci GET network.lan
  | interface

# Other errors are silent with -q (measured)

  $ uci -q get network.lan.proto
  [1]
  $ uci -q commit network
  [1]
  $ uci -q changes network
  [1]
  $ uci -q set network.lan.proto=dhcp
  [1]
  $ uci -q delete network.lan.proto
  [1]
  $ uci -q revert network
  [1]

# Without -q they have a line (source)

  $ uci get network.lan.proto
  ! uci: Entry not found
  [1]
  $ uci get network.lan.proto.more
  ! uci: Parse error
  [1]
  $ printf "config interface 'lan'\n" > network
  $ uci set network.wan.proto=dhcp
  ! uci: Invalid argument
  [1]
  $ uci get network.@interface
  ! uci: Invalid argument
  [1]

# A get or revert with a value fails without a word (source)

  $ printf "config interface 'lan'\n" > network
  $ uci get network.lan=interface
  [1]
  $ uci revert network.lan=interface
  [1]
