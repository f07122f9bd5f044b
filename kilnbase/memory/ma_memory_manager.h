/* How much memory there is, and blocks of memory outside the heap.
 *
 * A mapped block stands in the system's paging file or in a temporary file of its own, which goes
 * with the block. Elsewhere than on Windows the file stays when the process is killed or crashes,
 * and a forked child that frees a block of its parent deletes the file, too.
 * The 24 bytes before the block tell its size, so that the block can be recognised, shrunk and
 * freed. Blocks are for data of many megabytes; the heap is faster for less.
 *
 *     double* heights = (double*)Ma_allocMmapMemory(1000 * sizeof(double), 0, 1);
 *     if (heights) heights[999] = 0.5;
 *     Ma_freeMmapMemory(heights);
 *
 * Kept as it is: sizes are unsigned 32-bit numbers of bytes in 32-bit arithmetic, so that a figure
 * of 4 GiB or more wraps. Callers compare them with sizes that were computed in the same way.
 *
 * The temporary folder is `vxOS::temporaryDirectory()`: the environment variable TMPDIR, else
 * "c:\Temp" on Windows and "/tmp" elsewhere. Without memory for a path, functions answer null,
 * false or 0 as if the system had refused. Nothing is reported. Nothing is locked: a block belongs
 * to one thread at a time.
 */
#ifndef KILNBASE_MEMORY_MA_MEMORY_MANAGER_H
#define KILNBASE_MEMORY_MA_MEMORY_MANAGER_H

#include <stdbool.h>
#include <stdint.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Physical memory in bytes: all, and what is available. In a container that may have less than the
 * machine, the container counts (`vxOS::SysInfo::getMemory`). */
KILNBASE_API uint32_t MA_get_real_memory_size(void);
KILNBASE_API uint32_t Ma_findPhysicalMemory(void);
KILNBASE_API uint32_t Ma_findAvailableMemory(void);
KILNBASE_API uint32_t Ma_findFreePhysicalMemory(void);

/** Virtual memory in bytes (physical memory and paging files): all, and what is available. */
KILNBASE_API uint32_t MA_get_total_swap(void);
KILNBASE_API uint32_t Ma_findVirtualMemory(void);
KILNBASE_API uint32_t MA_swap_available(void);
/** The available virtual memory less 5 MiB; 0 when not more than that is available. */
KILNBASE_API uint32_t Ma_findFreeVirtualMemory(void);

/** The bytes free on the disk of the temporary folder less 5 MiB; 0 when less than 5 MiB are
 * free and when the system does not tell. */
KILNBASE_API uint32_t Ma_findMmapMemory(void);

/** What limits the data of the process, in bytes. Null pointers are skipped.
 *
 * The system sets no limits of this kind. Therefore the first five numbers are 0: a soft limit, the
 * data that may be used below it, the limit, the data that may be used below that, and the data in
 * use. Then follow the address room left (0x7FFFFFFE less the data in use), the available virtual
 * memory, and the bytes free on the disk of the temporary folder (0 when the system does not
 * tell). */
KILNBASE_API void Ma_get_process_data_limits(uint32_t* soft_limit, uint32_t* soft_usable,
                                             uint32_t* limit, uint32_t* usable, uint32_t* in_use,
                                             uint32_t* address_room, uint32_t* virtual_available,
                                             uint32_t* disk_free);

/** 24: the bytes that a mapping has before the block. */
KILNBASE_API uint32_t Ma_get_mmap_overhead(void);

/** Whether there is room for a block and `extra` bytes more: size + 24 + extra bytes of virtual
 * memory for a block in the paging file (`paged` is not 0), else on the disk of the temporary
 * folder, where 5 MiB stay free. Kept as it is: the sums wrap at 4 GiB. */
KILNBASE_API bool Ma_checkMmapMemory(uint32_t size, uint32_t extra, int paged);

/** A new block of `size` zero bytes at a multiple of 8. Null when `Ma_checkMmapMemory` denies the
 * room, when the system refuses, and when size + 24 is not below 4 GiB. A block that is not `paged`
 * takes the space on the disk now. Its file has the name "Magic0" and six other characters; the
 * path of the file must be shorter than 260 bytes. The caller frees the block with
 * `Ma_freeMmapMemory`. */
KILNBASE_API void* Ma_allocMmapMemory(uint32_t size, uint32_t extra, int paged);

/** Makes a block smaller: its end becomes the end of a page, so that at least `new_size` bytes
 * stay. Returns the bytes that the block has then. A block that is not longer than that keeps its
 * size. Kept as it is: no memory goes back to the system. 0 for null and for memory without the
 * mark of a block. The 24 bytes before `p` must be readable. */
KILNBASE_API uint32_t Ma_shrinkMmapMemory(void* p, uint32_t new_size);

/** Frees a block and deletes its file. Null and memory without the mark of a block are ignored. The
 * 24 bytes before `p` must be readable. */
KILNBASE_API void Ma_freeMmapMemory(void* p);

#ifdef __cplusplus
}
#endif

#endif
