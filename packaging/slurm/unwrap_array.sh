#!/bin/bash
#SBATCH --job-name=tessora --array=0-15 --cpus-per-task=1 --mem=4G --time=08:00:00
#SBATCH --output=tessora-%A_%a.log --open-mode=append
# sbatch unwrap_array.sh MESHES RESULTS [options of tessora unwrap]. Submitted again, it does what is missing.
# For a part of the shards (--array=3,7) TESSORA_SHARDS tells how many there are in all.
set -eu
meshes=$1 results=$2
shift 2
exec tessora unwrap "$meshes" --out_dir "$results" --skip_existing --jobs "${SLURM_CPUS_PER_TASK:-1}" \
    --shard "$SLURM_ARRAY_TASK_ID/${TESSORA_SHARDS:-$((SLURM_ARRAY_TASK_MAX + 1))}" "$@"
