"""What the end-to-end tests share: the programs as processes, an upstream that records, DNS by hand."""
