"""The addresses that the demo filter makes from a name: in 198.18.0.0/15 and in 2001:db8::/64 the low bits of its
64-bit FNV-1a."""

ADDRESSES = {
    "example.com": ("198.19.20.198", "2001:db8::5768:4663:4e27:14c6"),
    "a.very.long.name.with.many.labels.example": ("198.19.212.225", "2001:db8::49ee:c593:879f:d4e1"),
}
