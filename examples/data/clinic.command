NPTESTS
  /ONESAMPLE TEST(sex satisfaction wait_min pain_before)
  /CRITERIA ALPHA=0.05 CILEVEL=95 SEED=2000000.
