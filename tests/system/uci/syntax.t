# Comments need no blank before them, quotes protect (source)

  $ printf "config t 's' # all of it\n\toption a b#c\n\toption d 'e#f'\n" > test
  $ uci show test
  | test.s=t
  | test.s.a='b'
  | test.s.d='e#f'

# Statements may be short, share a line, and go on on the next (source)

  $ printf 'c t s; o a 1; l b 2\n\toption \\\nc 3\n' > test
  $ uci show test
  | test.s=t
  | test.s.a='1'
  | test.s.b='2'
  | test.s.c='3'

# A section may not change its type (source)

  $ printf "config t 's'\nconfig u 's'\n" > test
  $ uci -q get test.s
  [1]

# Values may be anything but control characters (source)

  $ printf "config t 's'\n" > test
  $ uci set test.s.a="it's ; # \$x"
  $ uci get test.s.a
  | it's ; # $x
  $ uci set test.s.a="$(printf 'a\001b')"
  ! uci: Parse error
  [1]
