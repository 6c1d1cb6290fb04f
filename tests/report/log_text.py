"""Logs put together from the pieces that the tool writes, for what no run brings about."""

LOG = "/var/log/Marvek_Support/kvlnfwup.log"
MAC1 = "020000000001"
MAC2 = "020000000002"
TITLE = ("Kelvane Firmware Update Log.\n\n"
         "Marvek Ethernet Firmware Update Tool, Version 1.0.64\n\n")
NO_DUPLICATES = "No duplicate MACs found. Okay\n"
TABLE = ("\n    ADAPTER MAC    \tBOOT\tMFW\tIPMI\tASF\tPXE\tUMP\tNCSI\tiSCSI\tEFI\tIMFW\tL2\t\tBUS:DEVICE:FUNC\n"
         "-------------------\t----\t----\t----\t---\t---\t---\t---\t---\t---\t---\t---\t---\t\t---\n")
PASS = "\nUpdating Kelvane Veltrasia II adapters.\n"
SUCCESS = "*** Update successful ***\n\n"
REFUSED = "*** No update needed because need_to_force_update=0 ***\n\n"


def about(command):
    return f'\nAbout to execute: "{command}"\n'


def returned(command, code):
    return f'Command "{command}" returned code: {code}\n '


def execute(command, code=0, output=""):
    return about(command) + output + returned(command, code)


def listing(listed="1 3C01 020000000001\nQuit\n", code=0):
    return (execute("./lnxfwvt2 <q >devices") + f"\n{listed}\n" + execute("rm devices")
            + execute(f"./lnxfwvt2 {MAC1} dir >{MAC1}", code))


START = TITLE + NO_DUPLICATES + listing()


def row(boot, mac=MAC1, iscsi="NA", bus=3):
    return f"{mac} (3C01)\t{boot}\tNA\tNA\tNA\tNA\tNA\tNA\t{iscsi}\tNA\tNA\tNA\t\t{bus}:0:0\n"


def directory(content="bc1\n", mac=MAC1):
    return f"\n\nDirectory information for {mac}\n{content}"


def visit(outcome, content="bc1\n", mac=MAC1):
    """The turn of a port up to the outcome of its stamp."""
    show = f"./lnxfwvt2 {mac} cfg -show vpdv0 >{mac}_VPD_V0_Data1.log \n"
    stamp = f"./lnxfwvt2 {mac} cfg -noreset -vpdv0 7.12b.4.3a >>{LOG}"
    return (f"\nThe device driver version for {mac} is 2.1.6.\n\n"
            f"Checking VPD-V0 data for device {mac} did: 1 ssid: 2 \n {show}" + execute(show)
            + f"*** Successfully completed performing V0 check on device {mac} ***\n\n\n"
            f"Writing Build Version 7.12b.4.3a to vpd-v0 for device {mac}\n{stamp}"
            + execute(stamp) + directory(content, mac) + outcome)


def unread_stamp():
    show = f"./lnxfwvt2 {MAC1} cfg -show vpdv0 >{MAC1}_VPD_V0_Data1.log \n"
    return (f"\nThe device driver version for {MAC1} is 2.1.6.\n\n"
            f"Checking VPD-V0 data for device {MAC1} did: 1 ssid: 2 \n {show}" + execute(show, 1)
            + f"\n!!! Error performing VPDV0 check on device {MAC1} !!!\n\n")


def yb_fix(code):
    """A wrong field YB, before the rest of the port's turn."""
    show = f"./lnxfwvt2 {MAC1} cfg -show vpdyb >>YB_Data1.log \n"
    ending = "!!! Error" if code else "*** Successfully completed"
    return (show + execute(show) + "VPD YB: x\n"
            + execute(f'./lnxfwvt2 {MAC1} cfg -vpdyb "x" >>{LOG}', code)
            + f"{ending} performing YB fix on device {MAC1} {ending[:3]}\n\n")


def stamped(mac=MAC1, content="bc1\n"):
    done = f"*** Successfully completed vpd-v0 update on device {mac} ***\n\n"
    return visit(done, content, mac)


def comparing(force, mac=MAC1, component="bc"):
    return ('Comparing "7.10a.2.1b" (on card) with "7.12b.4.3a" (current build) '
            f"need_to_force_update={force}\nUpdating {mac} using file 3C01{component}.bin\n")


def flash_command(forced, mac=MAC1, component="bc"):
    force = "-F " if forced else ""
    return f"./lnxfwvt2 {mac} upgrade -noreset {force}-{component} 3C01{component}.bin nv.bak >>{LOG}"


def flash_failure(mac=MAC1, component="bc"):
    return (f" !!! Error updating {component} firmware on device {mac} "
            f"using file 3C01{component}.bin !!!\n\n")


def flash(force, forced, code, outcome, mac=MAC1, output="", component="bc"):
    return (comparing(force, mac, component)
            + execute(flash_command(forced, mac, component), code, output) + outcome)


def crc(passed, mac=MAC1):
    words = "*** Successfully completed", "***"
    if not passed:
        words = " !!! Error performing", "!!!"
    return (execute(f"./lnxfwvt2 {mac} crc <y >>{LOG}", 0 if passed else 8) + directory(mac=mac)
            + f"{words[0]} CRC check on device {mac} {words[1]}\n\n")


def removal(block, code):
    ending = "removal failed" if code else "removed successfully"
    return (execute(f"./lnxfwvt2 {MAC1} dir -delete isb_{block} >>{LOG}", code)
            + f"*** iscsi {block} {ending} ***\n")


def ncsi_off(code, outcome):
    return (START + f"Disabling management firmware (NCSI) for {MAC1}\n"
            + execute(f"./lnxfwvt2 {MAC1} cfg -mgmt 0 >>{LOG}", code) + outcome)


def summary(clean):
    if clean:
        return f"\n\nUpdate complete. The firmware update log has been saved in {LOG}.\n"
    return ("\n\nOne or more errors occurred during the firmware update process. "
            f"See {LOG} for more information.\n")


END = execute("rm q")


def finish(clean, rows=row("7.12.5")):
    """From the end of the pass on, with these rows in the second table."""
    return (execute(f"rm {MAC1}") + listing() + TABLE + rows + execute(f"rm {MAC1}")
            + summary(clean) + END)
