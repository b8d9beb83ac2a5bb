# All the checks, one after the other, in one virtual machine.
result=0
for checks in nuvctl host; do
  echo "--- $checks"
  bash "/checks/${checks}_checks.sh" || result=1
done
[ "$result" = 0 ]
