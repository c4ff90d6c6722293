#include "emulator.h"

#include <unistd.h>

#include <cstdio>
#include <stdexcept>

namespace {

constexpr long kRegisterWindow = 64L << 20;

}  // namespace

std::vector<std::string> emulatorCommand(const EmulatorPlan& plan) {
    std::vector<std::string> command;
    const auto add = [&command](std::initializer_list<std::string> words) {
        command.insert(command.end(), words);
    };
    if (plan.arm) {
        add({"qemu-system-arm", "-M", "virt,highmem=off", "-cpu", "cortex-a15"});
    } else {
        add({"qemu-system-x86_64", "-M", "q35,i8042=off", "-accel", "tcg", "-vga", "none"});
    }
    if (!plan.registers.empty()) {
        add({"-object",
             "memory-backend-file,id=registers,size=64M,share=on,mem-path=" + plan.registers,
             "-device", "ivshmem-plain,memdev=registers"});
    }
    if (!plan.disk.empty()) {
        add({"-virtfs", "local,mount_tag=disk,security_model=passthrough,path=" + plan.disk});
    }
    if (!plan.flash.empty()) {
        const std::string told = "driver=blklogwrites,node-name=flash,file=image,log=writes";
        add({"-blockdev", "driver=file,node-name=image,filename=" + plan.flash});
        add({"-blockdev", "driver=file,node-name=writes,filename=" + plan.writes});
        add({"-blockdev", told + ",log-super-update-interval=1"});
        add({"-device", "virtio-blk-pci,drive=flash"});
    }
    const std::string serial = plan.arm ? "ttyAMA0" : "ttyS0";
    add({"-m", "256", "-kernel", plan.kernel, "-initrd", plan.initramfs, "-append",
         "console=" + serial + " quiet rdinit=/init panic=-1 systemd.show_status=no", "-device",
         "qemu-xhci,id=usb", "-device", "usb-kbd,id=kbd0,bus=usb.0", "-device",
         "usb-mouse,id=mouse0,bus=usb.0"});
    return command;
}

void makeRegisters(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr || ftruncate(fileno(file), kRegisterWindow) != 0) {
        throw std::runtime_error("cannot write " + path);
    }
    std::fclose(file);
}
