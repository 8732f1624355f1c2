#!/bin/bash
# One night of a fleet on Slurm: an array job whose task N visits the site of line N of a list. docs/fleet.md shows how to submit it.
#   sbatch --array=1-$(wc -l <SITES) [--output=FILE] slurm-night.sh SITES
# SITES lists one INI file per line, on a file system that all nodes share, and so are the events, the logs and the state.
#SBATCH --job-name=ruvo
# A task of a lost node starts again on another one.
#SBATCH --requeue
#SBATCH --ntasks=1
#SBATCH --mem=128M
#SBATCH --time=12:00:00
set -u
site=$(sed -n "${SLURM_ARRAY_TASK_ID}p" "$1")
if [ -z "$site" ]; then
    echo "slurm-night.sh: $1 has no line $SLURM_ARRAY_TASK_ID" >&2
    exit 2
fi
# On the shared file system too, so that a task that was started again never visits beside its first copy.
export RUVO_LOCK_DIR=${RUVO_LOCK_DIR:-$(dirname "$1")/lock}
export RUVO_STATE_DIR=${RUVO_STATE_DIR:-$(dirname "$1")/state}
# In the shell's place, so that it is the visit that hears TERM when the task is cancelled or its time is over.
exec /usr/lib/ruvo/run-site "$site"
